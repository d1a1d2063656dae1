// Ends a service at any byte of what is said between it and its client.
#pragma once

#include <poll.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <android-base/unique_fd.h>

// Takes the place of a registered service and passes every byte on, in both directions, until so
// many have passed; then it drops all connections and the registration, as the service's death
// would.
class CutConnection {
  public:
    // `registration` is the path of the service's registration file. Behind `bytes` bytes, on a
    // thread of this object, the connections are cut and then `onCut` is called.
    CutConnection(const std::string& registration, size_t bytes, std::function<void()> onCut);
    // Cuts what has not been cut, without calling onCut.
    ~CutConnection();
    CutConnection(const CutConnection&) = delete;
    CutConnection& operator=(const CutConnection&) = delete;

    size_t passed() const { return mPassed; }

  private:
    struct Pair {
        android::base::unique_fd client;
        android::base::unique_fd service;
    };

    void run();
    void accept();
    bool pass(int from, int to);
    void cut();

    const std::string mService;  // the socket that the service answers on
    const std::string mOwn;  // and the one that stands in for it
    const size_t mBytes;
    const std::function<void()> mOnCut;
    std::atomic<size_t> mPassed = 0;
    android::base::unique_fd mListening;
    android::base::unique_fd mRegistration;
    android::base::unique_fd mStop;
    std::vector<Pair> mPairs;
    std::thread mThread;
};
