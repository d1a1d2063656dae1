// Wraps functions of the platform, to count the library's calls and to inject faults.
#pragma once

#include <atomic>

#include <android/binder_auto_utils.h>

struct PlatformSeam {
    // Calls of AServiceManager_isDeclared: one for each binding, two if the service is undeclared.
    std::atomic<int> declarationChecks = 0;
    // Calls of AServiceManager_waitForService.
    std::atomic<int> waits = 0;
    // If set, look-ups return this object instead of a proxy. Linking to the death of a local
    // object fails.
    ndk::SpAIBinder localObject;
    // NDK death recipients that have not been freed yet.
    std::atomic<int> deathRecipients = 0;
};

PlatformSeam& platformSeam();
