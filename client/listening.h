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
// Returns the service's handle, or -1. Holds listening_callback_mutex from the search for
// duplicates until the entry is added, so that nobody can register the same in between.
template <typename Watched, typename Callback>
int registerListening(const Operation& operation, Watched MirxCallbackGroup::*list,
                      const Watched& watched, const MirxRequestParcel& parcel,
                      const std::shared_ptr<Callback>& callback) {
    const ExitGate::Pass pass(g_mirx_gate);
    std::shared_ptr<MirxCallbackClient> client;  // released after the locks
    std::unique_lock registry(listening_callback_mutex, std::defer_lock);
    int32_t handle = -1;
    const auto call = [&](IMirx& hal) -> Attempt {
        registry.lock();
        const android::base::ScopedLockAssertion locked(listening_callback_mutex);
        for (const MirxCallbackGroup& group : listening_callback_groups) {
            if (group.*list == watched) return refuse("Same callback interface registered already");
        }
        client = forRegistration(callback);
        return hal.listeningRegister(parcel, client, &handle);
    };
    callMirx(operation, call, [&](bool succeeded) {
        if (succeeded) {
            const android::base::ScopedLockAssertion locked(listening_callback_mutex);
            listening_callback_groups.emplace_back(client, watched, handle);
            logInfo("A callback has been registered to Mirx HAL ");
        }
        // A failed call must not keep it while it waits to drop the proxy: a thread that holds the
        // proxy's lock shared may be waiting for this mutex.
        registry.unlock();
    });
    return handle;
}

}  // namespace mirxHalclient::internal
