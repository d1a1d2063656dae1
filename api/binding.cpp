// The event interface's globals, how the proxy is bound and how it is dropped.
#include "api/binding.h"

#include <android/binder_manager.h>

#include "common/death_link.h"

namespace dov {

constinit ExitGate g_dov_gate;

// In the order in which they are made; destroyed in reverse when the process ends, unless a thread
// still uses them.
[[clang::no_destroy]] std::shared_timed_mutex g_dov_hal_mutex;
[[clang::no_destroy]] std::shared_ptr<IMirx> g_dov_hal;
static DeathLink g_dov_death_recipient;

static const struct Teardown {
    ~Teardown() { g_dov_gate.closeAndDestroy(g_dov_hal, g_dov_hal_mutex); }
} gTeardown;

static void logError(const char* text) {
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "%s", text);
}

static void onDovDied(void* /*cookie*/) {
    const ExitGate::Pass pass(g_dov_gate);
    if (!pass) return;
    std::lock_guard lock(g_dov_hal_mutex);
    dropLinked(g_dov_hal);
    logError("Mirx HAL Service died");
}

int32_t dov_get_mirx_hal_and_link_to_death() {
    {
        std::shared_lock lock(g_dov_hal_mutex);
        if (g_dov_hal) return 0;
    }
    // The proxy is not looked at again here: two threads that both found it empty bind one after
    // the other.
    std::lock_guard lock(g_dov_hal_mutex);
    if (!AServiceManager_isDeclared(kServiceName)) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "Mirx is not declared, AServiceManager_isDeclared:%d",
                            AServiceManager_isDeclared(kServiceName));
        return -1;
    }
    g_dov_hal = IMirx::fromBinder(ndk::SpAIBinder(AServiceManager_checkService(kServiceName)));
    if (!g_dov_hal) {
        logError("Mirx HAL Service not found");
        return -1;
    }
    if (linkToDeath(g_dov_death_recipient, *g_dov_hal, onDovDied) != STATUS_OK) {
        g_dov_hal.reset();
        logError("Unable to link to g_dov_hal death notifications!");
        return -1;
    }
    return 0;
}

void dropDovHal(const char* name) {
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "%s() failed : mirx HAL service not available",
                        name);
    std::lock_guard lock(g_dov_hal_mutex);
    dropLinked(g_dov_hal);
}

}  // namespace dov
