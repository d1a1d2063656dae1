// The low-level client's connection to the service, and the pattern of every call through it.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <utility>

#include <android/log.h>

#include "common/exit_gate.h"
#include "common/service.h"

namespace mirxHalclient::internal {

using namespace dovcommon;

inline constexpr char kLogTag[] = "MIRXFramework-lib-vendor";

// Everyone who uses a global of the low-level client has a pass of it.
extern ExitGate g_mirx_gate;

// The proxy; empty while the client is not bound. Guarded by g_mirx_hal_mutex: shared for use,
// exclusive for change.
extern std::shared_ptr<IMirx> g_mirx_hal;
extern std::shared_timed_mutex g_mirx_hal_mutex;

// Makes sure that g_mirx_hal is bound if the service can be bound; the caller looks at g_mirx_hal
// afterwards. Blocks until a declared service has registered. Takes g_mirx_hal_mutex; logs why the
// service cannot be bound.
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
    const char* entry;  // logged first of all
    const char* failureName;  // what the log calls it when its call has failed
};

// The status of an operation's one call, or nothing when it has refused to make it.
using Attempt = std::optional<ndk::ScopedAStatus>;

// Logs why an operation refuses to call.
inline Attempt refuse(const char* why) {
    logError(why);
    return std::nullopt;
}

inline void doNothing() {}

// The pattern around every service call: log the entry, bind, call with the lock held shared, drop
// the proxy on failure.
//
// `call` takes the proxy (IMirx&) and returns an Attempt; it runs with g_mirx_hal_mutex held
// shared. `afterCall` runs once the call was made and that lock released, before the status is
// looked at. `alsoLock`, when given, is taken together with the shared lock: never waited for while
// that is held, because its holder may be about to drop the proxy and so wait for everyone who
// holds the shared lock. It stays locked, as does whatever `afterCall` locks, also while the proxy
// is dropped.
//
// Returns true when the service was called and its status is OK. Once the process exits, it is not
// called any more.
template <typename Call, typename AfterCall = void (*)()>
bool callMirx(const Operation& operation, Call&& call, AfterCall&& afterCall = doNothing,
              std::unique_lock<std::mutex>* alsoLock = nullptr) {
    logInfo(operation.entry);
    const ExitGate::Pass pass(g_mirx_gate);
    if (!pass) return false;
    get_mirx_hal_and_link_to_death();
    std::shared_lock lock(g_mirx_hal_mutex, std::defer_lock);
    if (alsoLock != nullptr) {
        std::lock(lock, *alsoLock);
    } else {
        lock.lock();
    }
    if (!g_mirx_hal) return false;
    const Attempt status = std::forward<Call>(call)(*g_mirx_hal);
    lock.unlock();
    if (!status) return false;
    std::forward<AfterCall>(afterCall)();
    if (status->isOk()) return true;
    dropMirxHal(operation.failureName);
    return false;
}

}  // namespace mirxHalclient::internal
