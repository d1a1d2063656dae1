// Test data: data elements and files.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include <android-base/file.h>

#include <aidl/vendor/tavro/hardware/mirx/MirxRequestData.h>

inline aidl::vendor::tavro::hardware::mirx::MirxRequestData element(
        int32_t id, std::optional<std::string> value = {}) {
    aidl::vendor::tavro::hardware::mirx::MirxRequestData data;
    data.id = id;
    data.value = std::move(value);
    return data;
}

// The path of a source file. On a device the file is next to the test program.
inline std::string sourceFile(const std::string& path) {
#ifdef DOV_SOURCES
    return DOV_SOURCES "/" + path;
#else
    return android::base::GetExecutableDirectory() + "/" + path;
#endif
}
