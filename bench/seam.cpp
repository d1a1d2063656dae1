// Replaces the service manager and death notices, so that the service can be a local object.
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

// These override the functions of the platform's library, for the client library too.
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

// The platform refuses to link to the death of a local object.
binder_status_t AIBinder_linkToDeath(AIBinder*, AIBinder_DeathRecipient*, void*) {
    return STATUS_OK;
}

binder_status_t AIBinder_unlinkToDeath(AIBinder*, AIBinder_DeathRecipient*, void*) {
    return STATUS_OK;
}

}  // extern "C"
#pragma GCC visibility pop
