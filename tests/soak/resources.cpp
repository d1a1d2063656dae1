// What a process has that must not grow.
#include "tests/soak/resources.h"

#include <dlfcn.h>

#include <atomic>
#include <filesystem>
#include <fstream>

#include <android/binder_ibinder.h>

static std::atomic<long> gDeathRecipients = 0;

// These stand before the platform's own in the program, and count.
#pragma GCC visibility push(default)
extern "C" {

AIBinder_DeathRecipient* AIBinder_DeathRecipient_new(AIBinder_DeathRecipient_onBinderDied onDied) {
    static const auto next = reinterpret_cast<decltype(&AIBinder_DeathRecipient_new)>(
            dlsym(RTLD_NEXT, "AIBinder_DeathRecipient_new"));
    ++gDeathRecipients;
    return next(onDied);
}

void AIBinder_DeathRecipient_delete(AIBinder_DeathRecipient* recipient) {
    static const auto next = reinterpret_cast<decltype(&AIBinder_DeathRecipient_delete)>(
            dlsym(RTLD_NEXT, "AIBinder_DeathRecipient_delete"));
    --gDeathRecipients;
    next(recipient);
}

}  // extern "C"
#pragma GCC visibility pop

namespace soak {
namespace {

long entries(const char* folder) {
    const std::filesystem::directory_iterator all(folder);
    return std::distance(begin(all), end(all));
}

}  // namespace

Resources Resources::now() {
    Resources resources{.descriptors = entries("/proc/self/fd"),
                        .threads = entries("/proc/self/task"),
                        .deathRecipients = gDeathRecipients};
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmRSS:")) resources.kilobytes = std::stol(line.substr(6));
    }
    return resources;
}

std::string Resources::text() const {
    return std::to_string(descriptors) + " descriptors, " + std::to_string(threads) + " threads, " +
           std::to_string(deathRecipients) + " death recipients, " + std::to_string(kilobytes) +
           " KB";
}

}  // namespace soak
