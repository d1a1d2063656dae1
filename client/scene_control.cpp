// mirxSACtlRequest and mirxSACtlRelease: the policy of one scene or subsystem, applied for a time.
#include <dov/halclient.h>

#include "client/binding.h"
#include "client/callback_client.h"
#include "client/request_data.h"

using namespace mirxHalclient::internal;

namespace mirxHalclient {
namespace {

void fillScene(MirxRequestParcel& parcel, int handle, int duration, int saId, int arg4, int flag,
               int pid) {
    fillControl(parcel, mirx::kSceneControl, handle, duration, arg4, flag, pid);
    parcel.requestData.emplace_back().id = saId;
}

}  // namespace

int mirxSACtlRequest(int duration, int saId, int pid) {
    return mirxSACtlRequest(-1, duration, saId, -1, -1, pid);
}

int mirxSACtlRequest(int handle, int duration, int saId, int arg4, int flag, int pid) {
    const Operation operation = {"mirx client mirxSACtlRequest", "mirxSACtlRequest"};
    return askMirx(operation, [&](IMirx& hal, int32_t* answer) {
        MirxRequestParcel parcel;
        fillScene(parcel, handle, duration, saId, arg4, flag, pid);
        return hal.request(parcel, answer);
    });
}

int mirxSACtlRequest(int handle, int duration, int saId, int arg4, int flag, int pid,
                     const std::shared_ptr<IClientCallback>& callback) {
    const Operation operation = {"mirx client mirxSACtlRequest with callback",
                                 "mirxSACtlRequest with callback"};
    MirxRequestParcel parcel;  // released after the lock, and with it the callback
    return askMirx(operation, [&](IMirx& hal, int32_t* answer) {
        fillScene(parcel, handle, duration, saId, arg4, flag, pid);
        parcel.callback =
                forRequest(callback, "mirx client mirxSACtlRequest add to request_callbacks");
        return hal.request(parcel, answer);
    });
}

int mirxSACtlRelease(int handle) {
    return askMirx({"mirx client mirxSACtlRelease", "mirxSACtlRelease"},
                   [&](IMirx& hal, int32_t* answer) { return hal.release(handle, answer); });
}

}  // namespace mirxHalclient
