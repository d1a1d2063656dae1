// Binds and drops the low-level client's proxy.
#include "client/binding.h"

#include <android/binder_manager.h>

#include "common/death_link.h"

namespace mirxHalclient::internal {

using namespace dovcommon;

static AIBinder_DeathRecipient* g_mirx_death_recipient = nullptr;

static void onMirxDied(void* /*cookie*/) {
    const ExitGate::Pass pass(g_mirx_gate);
    if (!pass) return;
    std::shared_ptr<IMirx> dropped;  // released after the lock
    std::lock_guard lock(g_mirx_hal_mutex);
    dropped = drop(g_mirx_death_recipient, g_mirx_hal);
    logError("Mirx HAL Service died");
}

void get_mirx_hal_and_link_to_death() {
    {
        std::shared_lock lock(g_mirx_hal_mutex);
        if (g_mirx_hal) return;
    }
    std::lock_guard lock(g_mirx_hal_mutex);
    if (g_mirx_hal || !AServiceManager_isDeclared(kServiceName)) {
        // Compat: also logged, with 1, when another thread has bound in the meantime.
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "Mirx is not declared, AServiceManager_isDeclared:%d",
                            AServiceManager_isDeclared(kServiceName));
        return;
    }
    g_mirx_hal = IMirx::fromBinder(ndk::SpAIBinder(AServiceManager_waitForService(kServiceName)));
    if (!g_mirx_hal) {
        logError("Mirx HAL Service not found");
        return;
    }
    if (linkToDeath(g_mirx_death_recipient, *g_mirx_hal, onMirxDied) != STATUS_OK) {
        drop(g_mirx_death_recipient, g_mirx_hal).reset();
        logError("Unable to link to g_mirx_hal death notifications!");
    }
}

void dropMirxHal(const char* failureName) {
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "%s() failed: mirx HAL service not available",
                        failureName);
    std::shared_ptr<IMirx> dropped;  // released after the lock
    std::lock_guard lock(g_mirx_hal_mutex);
    dropped = drop(g_mirx_death_recipient, g_mirx_hal);
}

}  // namespace mirxHalclient::internal
