// The event interface's connection to the service, and the pattern of every call through it.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <utility>

#include <android/log.h>

#include "common/exit_gate.h"
#include "common/service.h"

namespace dov {

using namespace dovcommon;

inline constexpr char kLogTag[] = "[DOV_CLIENT]";

// Everyone who uses a global of the event interface has a pass of it.
extern ExitGate g_dov_gate;

// The proxy; empty while the event interface is not bound. Guarded by g_dov_hal_mutex: shared for
// use, exclusive for change.
extern std::shared_timed_mutex g_dov_hal_mutex;
extern std::shared_ptr<IMirx> g_dov_hal;

// Binds g_dov_hal if it is empty. Does not wait for the service. Takes g_dov_hal_mutex; logs why
// the service cannot be bound.
//
// Returns 0 when g_dov_hal is set on return, -1 otherwise.
int32_t dov_get_mirx_hal_and_link_to_death();

// Logs that the operation failed and empties g_dov_hal, so that the next call binds again. Takes
// g_dov_hal_mutex.
void dropDovHal(const char* name);

// What became of a call.
enum class CallResult {
    kNotBound,  // the service could not be bound
    kNoProxy,  // bound, but the proxy was gone again when the call was to be made
    kRefused,  // the operation itself decided not to call
    kFailed,  // called; the status is missing or not OK, the proxy has been dropped
    kOk,
};

// How an operation appears in the log.
struct Operation {
    const char* name;
    const char* noProxyMessage = nullptr;  // logged in the case of kNoProxy
};

// The pattern around every service call: bind, call with the lock held shared, drop the proxy on
// failure. Once the process exits, kNotBound.
//
// `call` takes the proxy (IMirx&) and returns the status of its one call, or nothing when it has
// refused to make it; it runs with g_dov_hal_mutex held shared.
template <typename Call>
CallResult callDov(const Operation& operation, Call&& call) {
    const ExitGate::Pass pass(g_dov_gate);
    if (!pass) return CallResult::kNotBound;
    if (const int32_t error = dov_get_mirx_hal_and_link_to_death(); error != 0) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "dov_get_mirx_hal_and_link_to_death error:%d", error);
        return CallResult::kNotBound;
    }
    std::shared_lock lock(g_dov_hal_mutex);
    if (!g_dov_hal) {
        if (operation.noProxyMessage != nullptr) {
            __android_log_print(ANDROID_LOG_ERROR, kLogTag, "%s", operation.noProxyMessage);
        }
        return CallResult::kNoProxy;
    }
    const std::optional<ndk::ScopedAStatus> status = std::forward<Call>(call)(*g_dov_hal);
    lock.unlock();
    if (!status) return CallResult::kRefused;
    if (status->isOk()) return CallResult::kOk;
    dropDovHal(operation.name);
    return CallResult::kFailed;
}

}  // namespace dov
