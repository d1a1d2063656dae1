// Wraps functions of the platform, to count the library's calls and to inject faults.
#include "tests/support/platform_seam.h"

#include <dlfcn.h>

#include <android/binder_manager.h>

PlatformSeam& platformSeam() {
    static PlatformSeam& seam = *new PlatformSeam;
    return seam;
}

namespace {

// Finds the platform's function of the given name.
template <typename Function>
Function* platforms(Function* /*own*/, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

AIBinder* localObject() {
    AIBinder* const object = platformSeam().localObject.get();
    if (object != nullptr) AIBinder_incStrong(object);
    return object;
}

}  // namespace

// A program's own functions override those of the libraries that it loads.
#pragma GCC visibility push(default)
extern "C" bool AServiceManager_isDeclared(const char* instance) {
    ++platformSeam().declarationChecks;
    static auto* const real = platforms(AServiceManager_isDeclared, "AServiceManager_isDeclared");
    return real(instance);
}
extern "C" AIBinder* AServiceManager_checkService(const char* instance) {
    if (AIBinder* const object = localObject()) return object;
    static auto* const real =
            platforms(AServiceManager_checkService, "AServiceManager_checkService");
    return real(instance);
}
extern "C" AIBinder* AServiceManager_waitForService(const char* instance) {
    ++platformSeam().waits;
    if (AIBinder* const object = localObject()) return object;
    static auto* const real =
            platforms(AServiceManager_waitForService, "AServiceManager_waitForService");
    return real(instance);
}
extern "C" AIBinder_DeathRecipient* AIBinder_DeathRecipient_new(
        AIBinder_DeathRecipient_onBinderDied onDied) {
    ++platformSeam().deathRecipients;
    static auto* const real = platforms(AIBinder_DeathRecipient_new, "AIBinder_DeathRecipient_new");
    return real(onDied);
}
extern "C" void AIBinder_DeathRecipient_delete(AIBinder_DeathRecipient* recipient) {
#pragma GCC visibility pop
    if (recipient != nullptr) --platformSeam().deathRecipients;
    static auto* const real =
            platforms(AIBinder_DeathRecipient_delete, "AIBinder_DeathRecipient_delete");
    real(recipient);
}
