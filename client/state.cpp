// mirxResStateRequest: the current values of resources, by opcode.
#include <dov/halclient.h>

#include "client/binding.h"
#include "client/request_data.h"

using DovClient::Resource;
using namespace mirxHalclient::internal;

namespace mirxHalclient {

int mirxResStateRequest(std::list<Resource>& resources, int pid, std::list<Resource>& out) {
    std::vector<MirxRequestData> data;
    const bool answered =
            callMirx({"mirx client mirxResStateRequest", "mirxResStateRequest"}, [&](IMirx& hal) {
                MirxRequestParcel parcel;
                parcel.pid = pid;
                parcel.requestData = toRequestData(resources);
                logInfo("mirx client hal mirxResStateRequest");
                return hal.stateRequest(parcel, &data);
            });
    if (!answered || data.empty()) return -1;
    for (const MirxRequestData& element : data) out.push_back(toResource(element));
    const int size = static_cast<int>(out.size());
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "mirx client mirxResStateRequest size %d", size);
    return size;
}

}  // namespace mirxHalclient
