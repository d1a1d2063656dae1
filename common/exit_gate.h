// Keeps the globals of a binding from being destroyed under the threads that use them.
#pragma once

#include <atomic>
#include <memory>

namespace dovcommon {

// Exit destroys the globals while other threads still run: binder threads deliver death notices and
// callbacks, and a thread may be inside a call or wait for a service that never starts. Locking a
// destroyed mutex aborts the process with bionic; destroying a condition variable that a thread
// waits on blocks exit for ever with glibc.
//
// Every user of the globals therefore holds a pass. Exit closes the gate without waiting. If nobody
// holds a pass then, the globals are destroyed, and later passes are refused. Otherwise they are
// not destroyed; the process ends a moment later anyway.
//
// Can be used before the globals are constructed and after they are destroyed.
class ExitGate {
  public:
    // Held on the stack while the globals are used. If it converts to false, do not touch them.
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

    // Closes the gate, and destroys `globals` in the order given unless a pass is held. Call it
    // once, during exit; nothing else may destroy them ([[clang::no_destroy]]).
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
