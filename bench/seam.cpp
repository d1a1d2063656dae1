// The platform's service manager and death notices, stood in for: the service is an object of this
// process, and a call through the library is a plain virtual call at its end.
#include "bench/seam.h"

#include <android/binder_ibinder.h>
#include <android/binder_manager.h>

static ndk::SpAIBinder gService;

void bench::provide(const std::shared_ptr<QuietService>& service) {
    gService = service->asBinder();
}

static AIBinder* found() {
    AIBinder_incStrong(gService.get());
    return gService.get();
}

// These come before those of the platform's library, also for the client library.
#pragma GCC visibility push(default)
extern "C" {

bool AServiceManager_isDeclared(const char*) {
    return true;
}

AIBinder* AServiceManager_checkService(const char*) {
    return found();
}

AIBinder* AServiceManager_waitForService(const char*) {
    return found();
}

// An object of one's own process cannot be linked to.
binder_status_t AIBinder_linkToDeath(AIBinder*, AIBinder_DeathRecipient*, void*) {
    return STATUS_OK;
}

binder_status_t AIBinder_unlinkToDeath(AIBinder*, AIBinder_DeathRecipient*, void*) {
    return STATUS_OK;
}

}  // extern "C"
#pragma GCC visibility pop
