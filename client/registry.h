// The listening registry: what the low-level client keeps of registrations.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <android-base/thread_annotations.h>

#include "client/callback_client.h"

namespace mirxHalclient::internal {

// One registration. What it watches is in one of the two lists, the other stays empty; both are
// compared with those of later registrations, so an empty list counts as registered too.
struct MirxCallbackGroup {
    MirxCallbackGroup(std::shared_ptr<MirxCallbackClient> callback, std::vector<int> opcodes,
                      int handle)
        : opcodes(std::move(opcodes)), handle(handle), callback(std::move(callback)) {}
    MirxCallbackGroup(std::shared_ptr<MirxCallbackClient> callback, std::vector<std::string> paths,
                      int handle)
        : paths(std::move(paths)), handle(handle), callback(std::move(callback)) {}

    std::vector<int> opcodes;  // resources or thermal subsystems, in the caller's order
    std::vector<std::string> paths;
    int handle;  // the service's
    std::shared_ptr<MirxCallbackClient> callback;
};

// Registering takes the mutex while it holds g_mirx_hal_mutex shared and keeps it when it has
// released that one; a registration or unregistration that failed takes g_mirx_hal_mutex exclusive
// while it holds this one. So nobody may wait for it while holding g_mirx_hal_mutex: see callMirx.
extern std::mutex listening_callback_mutex;
extern std::vector<MirxCallbackGroup> listening_callback_groups
        GUARDED_BY(listening_callback_mutex);

}  // namespace mirxHalclient::internal

// Said here and not in the public header, which would need the platform's for it.
extern std::vector<std::shared_ptr<MirxCallbackClient>> request_callbacks
        GUARDED_BY(request_callback_mutex);
