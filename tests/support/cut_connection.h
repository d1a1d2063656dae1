// Cuts the connection between a service and its client after a given number of bytes.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include <android-base/unique_fd.h>

// Registers itself in place of a service and forwards every byte in both directions. After the
// given number of bytes it drops all connections and the registration, as the service's death
// would.
class CutConnection {
  public:
    // `registration` is the path of the service's registration file. After `bytes` bytes a thread
    // of this object cuts the connections and then calls `onCut`.
    CutConnection(const std::string& registration, size_t bytes, std::function<void()> onCut);
    // Cuts the remaining connections without calling onCut.
    ~CutConnection();

    size_t passed() const { return mPassed; }

  private:
    void run();
    bool pass(int from, int to);

    const std::string mService;  // the service's own socket
    const std::string mOwn;  // the socket that clients connect to
    const size_t mBytes;
    const std::function<void()> mOnCut;
    std::atomic<size_t> mPassed = 0;
    android::base::unique_fd mListening, mRegistration, mStop, mStopped;
    std::thread mThread;
};
