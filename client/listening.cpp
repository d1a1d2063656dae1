// Listening to resources by opcode, and the end of every registration.
#include "client/listening.h"

#include <dov/halclient.h>

#include <algorithm>
#include <iterator>

#include "client/request_data.h"

using DovClient::Resource;
using namespace mirxHalclient::internal;

namespace mirxHalclient {
namespace {

void forgetRegistration(int handle) {
    std::vector<MirxCallbackGroup> removed;  // destroyed after the mutex is released
    std::lock_guard lock(listening_callback_mutex);
    std::vector<MirxCallbackGroup>& groups = listening_callback_groups;
    const auto first = std::stable_partition(
            groups.begin(), groups.end(),
            [handle](const MirxCallbackGroup& group) { return group.handle != handle; });
    if (first == groups.end()) {
        logError("The callback was not registered before");
        return;
    }
    __android_log_print(ANDROID_LOG_INFO, kLogTag,
                        "a callback has been unregistered to Mirx HAL handle %d", handle);
    removed.assign(std::make_move_iterator(first), std::make_move_iterator(groups.end()));
    groups.erase(first, groups.end());
}

}  // namespace

int mirxResListeningRegister(std::list<Resource>& resources, int pid,
                             const std::shared_ptr<IClientCallback>& callback) {
    MirxRequestParcel parcel;
    parcel.pid = pid;
    parcel.requestData = toRequestData(resources);
    std::vector<int> opcodes;
    for (const Resource& resource : resources) opcodes.push_back(resource.opcode);
    // Compat: a failure is logged under a sibling function's name.
    return registerListening({"mirxResListeningRegister", "mirx_res_listening_register_map"},
                             &MirxCallbackGroup::opcodes, opcodes, parcel, callback);
}

int mirxResListeningUnRegister(int handle) {
    int32_t result = -1;
    // The entry is removed whatever the service answers.
    callMirx(
            {"mirx client mirxResListeningUnRegister", "mirxResListeningUnRegister"},
            [&](IMirx& hal) -> Attempt { return hal.listeningUnregister(handle, &result); },
            [handle](bool /*succeeded*/) { forgetRegistration(handle); });
    return result;
}

}  // namespace mirxHalclient
