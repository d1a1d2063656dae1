// Resources as elements of a request.
#pragma once

#include <vector>

#include <dov/Resource.h>

#include "common/service.h"

namespace dov {

// An absent value stays absent.
inline dovcommon::MirxRequestData toElement(const DovClient::Resource& resource) {
    dovcommon::MirxRequestData data;
    data.id = resource.opcode;
    data.value = resource.value;
    return data;
}

inline std::vector<dovcommon::MirxRequestData> toElements(
        const std::vector<DovClient::Resource>& resources) {
    std::vector<dovcommon::MirxRequestData> list;
    list.reserve(resources.size());
    for (const DovClient::Resource& resource : resources) list.push_back(toElement(resource));
    return list;
}

}  // namespace dov
