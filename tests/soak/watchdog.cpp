// Ends a process whose call hangs, and prints the stack of every thread.
#include "tests/soak/watchdog.h"

#include <execinfo.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

namespace soak {
namespace {

void writeStack(int) {
    std::array<void*, 64> frames;
    const int count = backtrace(frames.data(), static_cast<int>(frames.size()));
    backtrace_symbols_fd(frames.data(), count, STDERR_FILENO);
}

// Makes each thread print its stack, one at a time.
void writeAllStacks() {
    struct sigaction action {};
    action.sa_handler = writeStack;
    action.sa_flags = SA_RESTART;
    sigaction(SIGUSR2, &action, nullptr);
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        const int thread = std::stoi(task.path().filename());
        std::fprintf(stderr, "thread %d\n", thread);
        syscall(SYS_tgkill, getpid(), thread, SIGUSR2);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

}  // namespace

Watchdog::Watchdog(std::chrono::seconds longest) : mThread([this, longest] { watch(longest); }) {}

Watchdog::~Watchdog() {
    mDone = true;
    mThread.join();
}

void Watchdog::begin(int slot, const char* name) {
    Slot& mine = mSlots[static_cast<size_t>(slot)];
    mine.name = nullptr;
    mine.since = Clock::now().time_since_epoch();
    mine.name = name;
}

void Watchdog::watch(std::chrono::seconds longest) {
    while (!mDone) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        for (const Slot& slot : mSlots) {
            const char* name = slot.name;
            if (name == nullptr || Clock::now().time_since_epoch() - slot.since.load() < longest) {
                continue;
            }
            std::fprintf(stderr, "%s has not returned for %lld seconds\n", name,
                         static_cast<long long>(longest.count()));
            writeAllStacks();
            _exit(1);
        }
    }
}

}  // namespace soak
