// The event interface's connection to the service, and the pattern of every call through it.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>

#include <android/log.h>

#include "common/exit_gate.h"
#include "common/service.h"

namespace dov {

using dovcommon::ExitGate;
using dovcommon::IMirx;
using dovcommon::MirxRequestData;
using dovcommon::MirxRequestParcel;

inline constexpr char kLogTag[] = "[DOV_CLIENT]";

// Hold an ExitGate::Pass of this gate while using any of the globals of the event interface.
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

enum class CallResult {
    kNotBound,  // the service could not be bound
    kNoProxy,  // bound, but another thread has dropped the proxy before the call
    kRefused,  // the operation decided not to call
    kFailed,  // called; the status is not OK and the proxy has been dropped
    kOk,
};

// How an operation appears in the log.
struct Operation {
    const char* name;
    const char* noProxyMessage = nullptr;  // logged in the case of kNoProxy
};

// The status of an operation's one call; nothing when the operation refused to call.
using Attempt = std::optional<ndk::ScopedAStatus>;

// The pattern of every service call: bind, call with the lock held shared, drop the proxy on
// failure. During exit the result is kNotBound.
//
// `prepare` runs with g_dov_hal_mutex held shared once the service was bound, even if the proxy has
// been dropped since. `call` takes the proxy (IMirx&) and returns an Attempt; it runs with the same
// lock held.
template <typename Prepare, typename Call>
CallResult callDov(const Operation& operation, Prepare&& prepare, Call&& call) {
    const ExitGate::Pass pass(g_dov_gate);
    if (!pass) return CallResult::kNotBound;
    if (const int32_t error = dov_get_mirx_hal_and_link_to_death(); error != 0) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "dov_get_mirx_hal_and_link_to_death error:%d", error);
        return CallResult::kNotBound;
    }
    std::shared_lock lock(g_dov_hal_mutex);
    prepare();
    if (!g_dov_hal) {
        if (operation.noProxyMessage != nullptr) {
            __android_log_print(ANDROID_LOG_ERROR, kLogTag, "%s", operation.noProxyMessage);
        }
        return CallResult::kNoProxy;
    }
    const Attempt status = call(*g_dov_hal);
    lock.unlock();
    if (!status) return CallResult::kRefused;
    if (status->isOk()) return CallResult::kOk;
    dropDovHal(operation.name);
    return CallResult::kFailed;
}

template <typename Call>
CallResult callDov(const Operation& operation, Call&& call) {
    return callDov(
            operation, [] {}, call);
}

}  // namespace dov
