// The low-level client's connection to the service, and the pattern of every call through it.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>

#include <android/log.h>

#include "common/exit_gate.h"
#include "common/service.h"

namespace mirxHalclient::internal {

using dovcommon::ExitGate;
using dovcommon::IMirx;
using dovcommon::MirxRequestData;
using dovcommon::MirxRequestParcel;

inline constexpr char kLogTag[] = "MIRXFramework-lib-vendor";

// Hold an ExitGate::Pass of this gate while using any of the globals of the low-level client.
extern ExitGate g_mirx_gate;

// The proxy; empty while the client is not bound. Guarded by g_mirx_hal_mutex: shared for use,
// exclusive for change.
extern std::shared_ptr<IMirx> g_mirx_hal;
extern std::shared_timed_mutex g_mirx_hal_mutex;

// Binds g_mirx_hal if it is empty; check g_mirx_hal afterwards. Blocks until a declared service has
// registered. Takes g_mirx_hal_mutex. Logs why the service cannot be bound.
void get_mirx_hal_and_link_to_death();

// Logs that the operation failed and empties g_mirx_hal, so that the next call binds again. Takes
// g_mirx_hal_mutex.
void dropMirxHal(const char* failureName);

inline void logInfo(const char* text) {
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "%s", text);
}
inline void logError(const char* text) {
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "%s", text);
}

// How an operation appears in the log.
struct Operation {
    const char* entry;  // logged first
    const char* failureName;  // the operation's name in the line about a failed call
};

// The status of an operation's one call; nothing when the operation refused to call.
using Attempt = std::optional<ndk::ScopedAStatus>;

// Logs why the operation refuses to call.
inline Attempt refuse(const char* why) {
    logError(why);
    return std::nullopt;
}

// The pattern of every service call: log the entry, bind, call with the lock held shared, drop the
// proxy on failure.
//
// `call` takes the proxy (IMirx&) and returns an Attempt; it runs with g_mirx_hal_mutex held
// shared. `afterCall` takes whether the call succeeded; it runs when the call was made and that
// lock has been released, before a failed call drops the proxy.
//
// The drop waits for every thread that holds the lock shared, so no lock that such a thread may
// wait for can be held then: what `call` has locked, `afterCall` unlocks.
//
// Returns true when the service was called and its status is OK. During exit the service is not
// called.
template <typename Call, typename AfterCall>
bool callMirx(const Operation& operation, Call&& call, AfterCall&& afterCall) {
    logInfo(operation.entry);
    const ExitGate::Pass pass(g_mirx_gate);
    if (!pass) return false;
    get_mirx_hal_and_link_to_death();
    std::shared_lock lock(g_mirx_hal_mutex);
    if (!g_mirx_hal) return false;
    const Attempt status = call(*g_mirx_hal);
    lock.unlock();
    if (!status) return false;
    afterCall(status->isOk());
    if (!status->isOk()) dropMirxHal(operation.failureName);
    return status->isOk();
}

template <typename Call>
bool callMirx(const Operation& operation, Call&& call) {
    return callMirx(operation, call, [](bool /*succeeded*/) {});
}

// callMirx for a call that answers with a number: `call` takes the proxy and a pointer to the
// answer.
//
// Returns the answer; -1 when the service has not written one.
template <typename Call>
int32_t askMirx(const Operation& operation, Call&& call) {
    int32_t answer = -1;
    callMirx(operation, [&](IMirx& hal) -> Attempt { return call(hal, &answer); });
    return answer;
}

}  // namespace mirxHalclient::internal
