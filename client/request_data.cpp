// Conversions between a caller's arguments and what travels to the service and back.
#include "client/request_data.h"

using DovClient::Resource;
using namespace dovcommon;

namespace mirxHalclient::internal {
namespace {

bool toFlag(int flag) {
    return flag >= 1;
}

}  // namespace

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

MirxRequestParcel toControlParcel(RequestKind kind, int handle, int64_t duration, int arg4,
                                  int flag, int pid) {
    MirxRequestParcel parcel;
    parcel.requestType = kind;
    parcel.handle = handle;
    parcel.duration = duration;
    parcel.arg4 = arg4;
    parcel.flag = toFlag(flag);
    parcel.pid = pid;
    return parcel;
}

}  // namespace mirxHalclient::internal
