// Data elements as tests write them.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include <aidl/vendor/tavro/hardware/mirx/MirxRequestData.h>

inline aidl::vendor::tavro::hardware::mirx::MirxRequestData element(
        int32_t id, std::optional<std::string> value = {}) {
    aidl::vendor::tavro::hardware::mirx::MirxRequestData data;
    data.id = id;
    data.value = std::move(value);
    return data;
}
