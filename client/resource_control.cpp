// mirxResCtlRequest and mirxResCtlRelease: settings by opcode, applied for a time.
#include <dov/halclient.h>

#include <algorithm>

#include "client/binding.h"
#include "client/callback_client.h"
#include "client/request_data.h"

using DovClient::Resource;
using namespace mirxHalclient::internal;

bool checkResourceList(std::list<Resource>& resources) {
    return std::all_of(resources.begin(), resources.end(), [](const Resource& resource) {
        const bool hasValue = resource.value && !resource.value->empty();
        return hasValue == (resource.opcode != 0);
    });
}

namespace mirxHalclient {

int mirxResCtlRequest(int duration, std::list<Resource>& resources, int pid) {
    return mirxResCtlRequest(-1, duration, resources, -1, -1, pid);
}

int mirxResCtlRequest(int duration, std::list<Resource>& resources, int flag, int pid) {
    return mirxResCtlRequest(-1, duration, resources, -1, flag, pid);
}

int mirxResCtlRequest(int duration, std::list<Resource>& resources, int arg4, int flag, int pid) {
    return mirxResCtlRequest(-1, duration, resources, arg4, flag, pid);
}

int mirxResCtlRequest(int handle, int duration, std::list<Resource>& resources, int pid) {
    return mirxResCtlRequest(handle, duration, resources, -1, -1, pid);
}

int mirxResCtlRequest(int handle, int duration, std::list<Resource>& resources, int flag, int pid) {
    return mirxResCtlRequest(handle, duration, resources, -1, flag, pid);
}

int mirxResCtlRequest(int handle, int duration, std::list<Resource>& resources, int arg4, int flag,
                      int pid) {
    const Operation operation = {"mirx client mirxResCtlRequest", "mirxResCtlRequest"};
    return askMirx(operation, [&](IMirx& hal, int32_t* answer) -> Attempt {
        if (!checkResourceList(resources)) {
            return refuse("mirxResCtlRequest ERROR: size unmatched for id and value ");
        }
        MirxRequestParcel parcel;
        fillControl(parcel, mirx::kResourceControl, handle, duration, arg4, flag, pid);
        parcel.requestData = toRequestData(resources);
        return hal.request(parcel, answer);
    });
}

int mirxResCtlRequest(int handle, int duration, std::list<Resource>& resources, int arg4, int flag,
                      int pid, const std::shared_ptr<IClientCallback>& callback) {
    // Compat: the refusal and the failure are logged under other names than the function's.
    const Operation operation = {"mirx client mirxResCtlRequest with callback",
                                 "mirx client MirxCallbackClient with callback"};
    MirxRequestParcel parcel;  // released after the lock, and with it the callback
    return askMirx(operation, [&](IMirx& hal, int32_t* answer) -> Attempt {
        if (!checkResourceList(resources)) {
            return refuse(
                    "mirx client mirx_resctl_request ERROR: size unmatched for id and value ");
        }
        fillControl(parcel, mirx::kResourceControl, handle, duration, arg4, flag, pid);
        parcel.callback =
                forRequest(callback, "mirx client mirxResCtlRequest add to request_callbacks");
        parcel.requestData = toRequestData(resources);
        return hal.request(parcel, answer);
    });
}

int mirxResCtlRelease(int handle) {
    return askMirx({"mirx client mirxResCtlRelease", "mirxResCtlRelease"},
                   [&](IMirx& hal, int32_t* answer) { return hal.release(handle, answer); });
}

}  // namespace mirxHalclient
