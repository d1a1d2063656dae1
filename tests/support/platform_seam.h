// Between the library and the platform: counts what the library asks and makes, and answers what
// cannot be had for real.
#pragma once

#include <atomic>

#include <android/binder_auto_utils.h>

struct PlatformSeam {
    // How often it was asked whether a service is declared: once for a binding, twice when it is
    // not.
    std::atomic<int> declarationChecks = 0;
    // How often a service was waited for.
    std::atomic<int> waits = 0;
    // Handed out instead of a proxy when set: linking to the death of an object of one's own
    // process fails.
    ndk::SpAIBinder localObject;
    // Death recipients of the NDK that are made and not yet freed.
    std::atomic<int> deathRecipients = 0;
};

PlatformSeam& platformSeam();
