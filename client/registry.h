// The listening registry: the registrations of this process.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <android-base/thread_annotations.h>

#include "client/callback_client.h"

namespace mirxHalclient::internal {

// One registration. One of the two lists holds what is watched; the other is empty.
// Compat: both lists are compared with those of later registrations, the empty one too.
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

// Lock order: g_mirx_hal_mutex (shared), then this mutex. Never wait for g_mirx_hal_mutex while
// holding it, nor destroy an entry: the destructor of a caller's callback may register or
// unregister.
extern std::mutex listening_callback_mutex;
extern std::vector<MirxCallbackGroup> listening_callback_groups
        GUARDED_BY(listening_callback_mutex);

}  // namespace mirxHalclient::internal

// Annotated here so that the public header need not include the platform's annotations.
extern std::vector<std::shared_ptr<MirxCallbackClient>> request_callbacks
        GUARDED_BY(request_callback_mutex);
