// Resources as the service receives them.
#pragma once

#include <vector>

#include <dov/Resource.h>

#include "common/service.h"

namespace dov {

inline dovcommon::MirxRequestData toRequestData(const DovClient::Resource& resource) {
    dovcommon::MirxRequestData data;
    data.id = resource.opcode;
    data.value = resource.value;  // absent stays absent
    return data;
}

inline std::vector<dovcommon::MirxRequestData> toRequestData(
        const std::vector<DovClient::Resource>& resources) {
    std::vector<dovcommon::MirxRequestData> list;
    list.reserve(resources.size());
    for (const DovClient::Resource& resource : resources) list.push_back(toRequestData(resource));
    return list;
}

}  // namespace dov
