// Conversions between a caller's arguments and the elements of parcels.
#include "client/request_data.h"

using DovClient::Resource;
using namespace dovcommon;

namespace mirxHalclient::internal {

std::vector<MirxRequestData> toRequestData(const std::list<Resource>& resources) {
    std::vector<MirxRequestData> data;
    data.reserve(resources.size());
    for (const Resource& resource : resources) {
        MirxRequestData& element = data.emplace_back();
        element.id = resource.opcode;
        element.value = resource.value.value_or("");
    }
    return data;
}

Resource toResource(const MirxRequestData& data) {
    return {data.id, data.value.value_or("")};
}

void fillControl(MirxRequestParcel& parcel, mirx::RequestKind kind, int handle, int64_t duration,
                 int arg4, int flag, int pid) {
    parcel.requestType = kind;
    parcel.handle = handle;
    parcel.duration = duration;
    parcel.arg4 = arg4;
    parcel.flag = flag >= 1;
    parcel.pid = pid;
}

}  // namespace mirxHalclient::internal
