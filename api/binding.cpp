// The event interface's globals; binds and drops its proxy.
#include "api/binding.h"

#include <android/binder_manager.h>

#include "common/death_link.h"

namespace dov {

using namespace dovcommon;

constinit ExitGate g_dov_gate;

// In the order of their construction. Exit destroys them in reverse order, unless a thread still
// uses them.
[[clang::no_destroy]] std::shared_timed_mutex g_dov_hal_mutex;
[[clang::no_destroy]] std::shared_ptr<IMirx> g_dov_hal;

namespace {

AIBinder_DeathRecipient* g_dov_death_recipient = nullptr;

const struct Teardown {
    ~Teardown() { g_dov_gate.closeAndDestroy(g_dov_hal, g_dov_hal_mutex); }
} gTeardown;

void logError(const char* text) {
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "%s", text);
}

void onDovDied(void* /*cookie*/) {
    const ExitGate::Pass pass(g_dov_gate);
    if (!pass) return;
    std::shared_ptr<IMirx> dropped;  // released after the lock
    std::lock_guard lock(g_dov_hal_mutex);
    dropped = drop(g_dov_death_recipient, g_dov_hal);
    logError("Mirx HAL Service died");
}

}  // namespace

int32_t dov_get_mirx_hal_and_link_to_death() {
    {
        std::shared_lock lock(g_dov_hal_mutex);
        if (g_dov_hal) return 0;
    }
    // Compat: the proxy is not checked again. Of two threads that both found it empty, the second
    // replaces what the first has bound.
    std::shared_ptr<IMirx> replaced;  // released after the lock
    std::lock_guard lock(g_dov_hal_mutex);
    if (!AServiceManager_isDeclared(kServiceName)) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "Mirx is not declared, AServiceManager_isDeclared:%d",
                            AServiceManager_isDeclared(kServiceName));
        return -1;
    }
    auto found = IMirx::fromBinder(ndk::SpAIBinder(AServiceManager_checkService(kServiceName)));
    replaced = drop(g_dov_death_recipient, g_dov_hal);
    g_dov_hal = std::move(found);
    if (!g_dov_hal) {
        logError("Mirx HAL Service not found");
        return -1;
    }
    if (linkToDeath(g_dov_death_recipient, *g_dov_hal, onDovDied) != STATUS_OK) {
        drop(g_dov_death_recipient, g_dov_hal).reset();
        logError("Unable to link to g_dov_hal death notifications!");
        return -1;
    }
    return 0;
}

void dropDovHal(const char* name) {
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "%s() failed : mirx HAL service not available",
                        name);
    std::shared_ptr<IMirx> dropped;  // released after the lock
    std::lock_guard lock(g_dov_hal_mutex);
    dropped = drop(g_dov_death_recipient, g_dov_hal);
}

}  // namespace dov
