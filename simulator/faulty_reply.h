// Falsifies the answers to queries.
#pragma once

#include <string>
#include <vector>

#include <aidl/vendor/tavro/hardware/mirx/MirxRequestData.h>

#include "simulator/fault.h"

namespace simulator {

using aidl::vendor::tavro::hardware::mirx::MirxRequestData;

inline std::string spoiled(const std::string& text, Misbehaviour::Reply reply) {
    using Reply = Misbehaviour::Reply;
    switch (reply) {
        case Reply::kEmpty:
        case Reply::kAbsent: return "";
        case Reply::kText: return "no number";
        case Reply::kLong: return std::string(300, 'x');
        case Reply::kHuge: return std::string(2'000'000, 'x');
        case Reply::kTrue:
        case Reply::kMany: break;
    }
    return text;
}

inline void spoil(std::vector<MirxRequestData>& data, Misbehaviour::Reply reply) {
    using Reply = Misbehaviour::Reply;
    if (reply == Reply::kTrue) return;
    if (reply == Reply::kEmpty) return data.clear();
    if (data.empty()) data.emplace_back();
    if (reply == Reply::kMany) {
        const std::vector<MirxRequestData> once = data;
        data.insert(data.end(), once.begin(), once.end());
        return;
    }
    for (MirxRequestData& element : data) {
        if (reply == Reply::kAbsent) {
            element.value = element.extra = std::nullopt;
        } else {
            element.value = spoiled("", reply);
        }
        if (reply == Reply::kHuge) break;
    }
}

}  // namespace simulator
