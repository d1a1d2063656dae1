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
    int32_t result = -1;
    callMirx({"mirx client mirxResCtlRequest", "mirxResCtlRequest"}, [&](IMirx& hal) -> Attempt {
        if (!checkResourceList(resources)) {
            return refuse("mirxResCtlRequest ERROR: size unmatched for id and value ");
        }
        MirxRequestParcel parcel =
                toControlParcel(kResourceControl, handle, duration, arg4, flag, pid);
        parcel.requestData = toRequestData(resources);
        return hal.request(parcel, &result);
    });
    return result;
}

int mirxResCtlRequest(int handle, int duration, std::list<Resource>& resources, int arg4, int flag,
                      int pid, const std::shared_ptr<IClientCallback>& callback) {
    // The refusal and the failure go by other names than the function's: callers depend on both.
    const Operation operation = {"mirx client mirxResCtlRequest with callback",
                                 "mirx client MirxCallbackClient with callback"};
    int32_t result = -1;
    callMirx(operation, [&](IMirx& hal) -> Attempt {
        if (!checkResourceList(resources)) {
            return refuse(
                    "mirx client mirx_resctl_request ERROR: size unmatched for id and value ");
        }
        MirxRequestParcel parcel =
                toControlParcel(kResourceControl, handle, duration, arg4, flag, pid);
        parcel.callback =
                forRequest(callback, "mirx client mirxResCtlRequest add to request_callbacks");
        parcel.requestData = toRequestData(resources);
        return hal.request(parcel, &result);
    });
    return result;
}

int mirxResCtlRelease(int handle) {
    int32_t result = -1;
    callMirx({"mirx client mirxResCtlRelease", "mirxResCtlRelease"},
             [&](IMirx& hal) { return hal.release(handle, &result); });
    return result;
}

}  // namespace mirxHalclient
