// Conversions between a caller's arguments and the elements of parcels.
#pragma once

#include <list>
#include <vector>

#include <dov/Resource.h>

#include "common/service.h"

namespace mirxHalclient::internal {

// One element for each resource, in order. The value is always present: an absent one is sent as an
// empty text.
std::vector<dovcommon::MirxRequestData> toRequestData(
        const std::list<DovClient::Resource>& resources);

// The value is always present: an absent one becomes an empty text.
DovClient::Resource toResource(const dovcommon::MirxRequestData& data);

// Fills in what every control request has; not the data list.
void fillControl(dovcommon::MirxRequestParcel& parcel, mirx::RequestKind kind, int handle,
                 int64_t duration, int arg4, int flag, int pid);

// The result of an operation that tells its caller only whether the service accepted it: 0 when the
// service answered 1 or more, else -1.
inline int toAcceptance(int32_t answer) {
    return answer >= 1 ? 0 : -1;
}

}  // namespace mirxHalclient::internal
