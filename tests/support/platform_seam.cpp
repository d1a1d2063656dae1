// Wraps functions of the platform, to count the library's calls and to inject faults.
#include "tests/support/platform_seam.h"

#include <dlfcn.h>

#include <android/binder_manager.h>

PlatformSeam& platformSeam() {
    static PlatformSeam& seam = *new PlatformSeam;
    return seam;
}

// Calls the platform's function of the given name.
#define PLATFORMS(name, argument)                                                             \
    [&] {                                                                                     \
        static auto* const real = reinterpret_cast<decltype(&name)>(dlsym(RTLD_NEXT, #name)); \
        return real(argument);                                                                \
    }()

static AIBinder* localObject() {
    AIBinder* const object = platformSeam().localObject.get();
    if (object != nullptr) AIBinder_incStrong(object);
    return object;
}

// A program's own functions override those of the libraries that it loads.
#pragma GCC visibility push(default)
extern "C" bool AServiceManager_isDeclared(const char* instance) {
    ++platformSeam().declarationChecks;
    return PLATFORMS(AServiceManager_isDeclared, instance);
}
extern "C" AIBinder* AServiceManager_checkService(const char* instance) {
    if (AIBinder* const object = localObject()) return object;
    return PLATFORMS(AServiceManager_checkService, instance);
}
extern "C" AIBinder* AServiceManager_waitForService(const char* instance) {
    ++platformSeam().waits;
    if (AIBinder* const object = localObject()) return object;
    return PLATFORMS(AServiceManager_waitForService, instance);
}
extern "C" AIBinder_DeathRecipient* AIBinder_DeathRecipient_new(
        AIBinder_DeathRecipient_onBinderDied onDied) {
    ++platformSeam().deathRecipients;
    return PLATFORMS(AIBinder_DeathRecipient_new, onDied);
}
extern "C" void AIBinder_DeathRecipient_delete(AIBinder_DeathRecipient* recipient) {
    if (recipient != nullptr) --platformSeam().deathRecipients;
    PLATFORMS(AIBinder_DeathRecipient_delete, recipient);
}
#pragma GCC visibility pop
