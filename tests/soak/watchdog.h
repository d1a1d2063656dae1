// Ends a process in which a call does not come back, and shows where every thread is.
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

    // A call that takes longer than `longest` ends the process with code 1.
    explicit Watchdog(std::chrono::seconds longest);
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    // The thread of this slot, 0 to kSlots - 1, begins the call `name`, which must outlive it; null
    // when it has come back.
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
