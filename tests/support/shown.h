// Resources and data elements as text, for comparisons and messages.
#pragma once

#include <string>
#include <vector>

#include <android-base/stringprintf.h>
#include <dov/Resource.h>

#include <aidl/vendor/tavro/hardware/mirx/MirxRequestData.h>

inline std::vector<std::string> shown(const std::vector<DovClient::Resource>& resources) {
    std::vector<std::string> lines;
    lines.reserve(resources.size());
    for (const auto& [opcode, value] : resources) {
        lines.push_back(android::base::StringPrintf("%08x ", static_cast<uint32_t>(opcode)) +
                        (value ? "'" + *value + "'" : "absent"));
    }
    return lines;
}

inline std::vector<std::string> shown(
        const std::vector<aidl::vendor::tavro::hardware::mirx::MirxRequestData>& data) {
    std::vector<std::string> lines;
    lines.reserve(data.size());
    for (const auto& element : data) {
        lines.push_back(shown(std::vector<DovClient::Resource>{{element.id, element.value}})[0]);
        if (element.arg != 0) lines.back() += " arg " + std::to_string(element.arg);
        if (element.path) lines.back() += " path '" + *element.path + "'";
        if (element.extra) lines.back() += " extra '" + *element.extra + "'";
    }
    return lines;
}
