// mirxSACtlRequest and mirxSACtlRelease: the policy of one scene or subsystem, applied for a time.
#include <dov/halclient.h>

#include "client/binding.h"
#include "client/callback_client.h"
#include "client/request_data.h"

using namespace mirxHalclient::internal;

namespace mirxHalclient {
namespace {

MirxRequestParcel toSceneParcel(int handle, int duration, int saId, int arg4, int flag, int pid) {
    MirxRequestParcel parcel = toControlParcel(kSceneControl, handle, duration, arg4, flag, pid);
    parcel.requestData.emplace_back().id = saId;
    return parcel;
}

}  // namespace

int mirxSACtlRequest(int duration, int saId, int pid) {
    return mirxSACtlRequest(-1, duration, saId, -1, -1, pid);
}

int mirxSACtlRequest(int handle, int duration, int saId, int arg4, int flag, int pid) {
    int32_t result = -1;
    callMirx({"mirx client mirxSACtlRequest", "mirxSACtlRequest"}, [&](IMirx& hal) {
        return hal.request(toSceneParcel(handle, duration, saId, arg4, flag, pid), &result);
    });
    return result;
}

int mirxSACtlRequest(int handle, int duration, int saId, int arg4, int flag, int pid,
                     const std::shared_ptr<IClientCallback>& callback) {
    const Operation operation = {"mirx client mirxSACtlRequest with callback",
                                 "mirxSACtlRequest with callback"};
    int32_t result = -1;
    callMirx(operation, [&](IMirx& hal) {
        MirxRequestParcel parcel = toSceneParcel(handle, duration, saId, arg4, flag, pid);
        parcel.callback =
                forRequest(callback, "mirx client mirxSACtlRequest add to request_callbacks");
        return hal.request(parcel, &result);
    });
    return result;
}

int mirxSACtlRelease(int handle) {
    int32_t result = -1;
    callMirx({"mirx client mirxSACtlRelease", "mirxSACtlRelease"},
             [&](IMirx& hal) { return hal.release(handle, &result); });
    return result;
}

}  // namespace mirxHalclient
