// Keeps the globals of a binding from being destroyed under the threads that use them.
#pragma once

#include <atomic>
#include <memory>

namespace dovcommon {

// The globals are destroyed when the process exits, but its threads run on: binder threads deliver
// notices of death and callbacks, and a thread may be in the middle of a call or wait for a service
// that never comes. With bionic it is the end of the process to lock a destroyed mutex; with glibc
// exit waits for ever for those who wait on a condition variable that it destroys.
//
// So whoever uses the globals passes through a gate, which exit closes without waiting for anybody.
// When nobody is inside, the globals go, and those who come later are turned away. When somebody
// is, the globals stay: the process ends with them a moment later.
//
// Usable before and after the time of the globals themselves.
class ExitGate {
  public:
    // Stands on the stack of whoever uses the globals. They must be left alone if it says false.
    // A thread may hold several at once.
    class Pass {
      public:
        explicit Pass(ExitGate& gate)
            : mGate(gate),
              mGranted(gate.mState.fetch_add(kOne, std::memory_order_acquire) % kOne == 0) {}
        ~Pass() { mGate.mState.fetch_sub(kOne, std::memory_order_release); }
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;

        explicit operator bool() const { return mGranted; }

      private:
        ExitGate& mGate;
        const bool mGranted;
    };

    // Closes the gate and then destroys `globals` in the order given, or leaves them as they are.
    // To be called once, by exit; they must not be destroyed otherwise ([[clang::no_destroy]]).
    template <typename... Globals>
    void closeAndDestroy(Globals&... globals) {
        const bool unused = mState.fetch_or(kClosed, std::memory_order_acq_rel) == 0;
        if (unused) (std::destroy_at(&globals), ...);
    }

  private:
    static constexpr unsigned kClosed = 1;
    static constexpr unsigned kOne = 2;  // for each pass

    std::atomic<unsigned> mState = 0;
};

}  // namespace dovcommon
