// Registers a callback for resources, by id or by path.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "client/binding.h"
#include "client/registry.h"

namespace mirxHalclient::internal {

// Registers `callback` for `parcel` and adds it to the listening registry. `watched` is what the
// registry keeps in `list`; the service is not called when an entry's `list` equals it already.
//
// Returns the service's handle, or -1. Holds listening_callback_mutex from the test for duplicates
// to the end, so that no second registration of the same can come in between.
template <typename Watched, typename Callback>
int registerListening(const Operation& operation, Watched MirxCallbackGroup::*list,
                      const Watched& watched, const MirxRequestParcel& parcel,
                      const std::shared_ptr<Callback>& callback) {
    int32_t handle = -1;
    std::shared_ptr<MirxCallbackClient> client;
    const ExitGate::Pass pass(g_mirx_gate);
    std::unique_lock registry(listening_callback_mutex, std::defer_lock);
    const auto call = [&](IMirx& hal) -> Attempt {
        const android::base::ScopedLockAssertion locked(listening_callback_mutex);
        for (const MirxCallbackGroup& group : listening_callback_groups) {
            if (group.*list == watched) return refuse("Same callback interface registered already");
        }
        client = forRegistration(callback);
        return hal.listeningRegister(parcel, client, &handle);
    };
    if (callMirx(operation, call, doNothing, &registry)) {
        const android::base::ScopedLockAssertion locked(listening_callback_mutex);
        listening_callback_groups.emplace_back(client, watched, handle);
        logInfo("A callback has been registered to Mirx HAL ");
    }
    return handle;
}

}  // namespace mirxHalclient::internal
