// Ends a process whose call hangs, and prints the stack of every thread.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>

namespace soak {

class Watchdog {
  public:
    static constexpr int kSlots = 16;

    // Ends the process with code 1 if a call takes longer than `longest`.
    explicit Watchdog(std::chrono::seconds longest);
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    // Records that the thread of `slot` (0 to kSlots - 1) begins the call `name`, or has returned
    // if `name` is null. `name` must stay valid during the call.
    void begin(int slot, const char* name);

  private:
    using Clock = std::chrono::steady_clock;
    struct Slot {
        std::atomic<const char*> name = nullptr;
        std::atomic<Clock::duration> since{};
    };

    void watch(std::chrono::seconds longest);

    std::array<Slot, kSlots> mSlots;
    std::atomic<bool> mDone = false;
    std::thread mThread;
};

}  // namespace soak
