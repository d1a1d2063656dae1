// Resources and data elements as text, for comparisons and messages.
#pragma once

#include <string>

#include <android-base/stringprintf.h>
#include <dov/Resource.h>

#include <aidl/vendor/tavro/hardware/mirx/MirxRequestData.h>

inline std::string shown(const DovClient::Resource& resource) {
    const std::string id =
            android::base::StringPrintf("{%x", static_cast<uint32_t>(resource.opcode));
    return id + (resource.value ? " '" + *resource.value + "'}" : "}");
}

inline std::string shown(const aidl::vendor::tavro::hardware::mirx::MirxRequestData& data) {
    std::string text = shown(DovClient::Resource{data.id, data.value});
    text.pop_back();
    if (data.arg != 0) text += " arg " + std::to_string(data.arg);
    if (data.path) text += " path '" + *data.path + "'";
    if (data.extra) text += " extra '" + *data.extra + "'";
    return text + "}";
}

// A list as "{7 '1'}{8}": the ids in hexadecimal, with what is present.
template <typename List>
std::string shown(const List& list) {
    std::string text;
    for (const auto& element : list) text += shown(element);
    return text;
}
