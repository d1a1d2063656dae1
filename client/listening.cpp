// Listening to resources by opcode, and the end of every registration.
#include "client/listening.h"

#include <dov/halclient.h>

#include <algorithm>

#include "client/request_data.h"

using DovClient::Resource;
using namespace mirxHalclient::internal;

namespace mirxHalclient {
namespace {

void forgetRegistration(int handle) REQUIRES(listening_callback_mutex) {
    const auto hasHandle = [handle](const MirxCallbackGroup& group) {
        return group.handle == handle;
    };
    if (std::any_of(listening_callback_groups.begin(), listening_callback_groups.end(),
                    hasHandle)) {
        __android_log_print(ANDROID_LOG_INFO, kLogTag,
                            "a callback has been unregistered to Mirx HAL handle %d", handle);
        std::erase_if(listening_callback_groups, hasHandle);
    } else {
        logError("The callback was not registered before");
    }
}

}  // namespace

int mirxResListeningRegister(std::list<Resource>& resources, int pid,
                             const std::shared_ptr<IClientCallback>& callback) {
    MirxRequestParcel parcel;
    parcel.pid = pid;
    parcel.requestData = toRequestData(resources);
    std::vector<int> opcodes;
    for (const Resource& resource : resources) opcodes.push_back(resource.opcode);
    // It fails under the name of a sibling: callers depend on it.
    return registerListening({"mirxResListeningRegister", "mirx_res_listening_register_map"},
                             &MirxCallbackGroup::opcodes, opcodes, parcel, callback);
}

int mirxResListeningUnRegister(int handle) {
    int32_t result = -1;
    const ExitGate::Pass pass(g_mirx_gate);
    std::unique_lock registry(listening_callback_mutex, std::defer_lock);
    callMirx(
            {"mirx client mirxResListeningUnRegister", "mirxResListeningUnRegister"},
            [&](IMirx& hal) { return hal.listeningUnregister(handle, &result); },
            // The registry lets go whatever the service answered.
            [&] {
                registry.lock();
                const android::base::ScopedLockAssertion locked(listening_callback_mutex);
                forgetRegistration(handle);
            });
    return result;
}

}  // namespace mirxHalclient
