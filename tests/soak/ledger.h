// Compares what callers were answered with what the service says it has received.
#pragma once

#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

#include <android-base/thread_annotations.h>

namespace soak {

// Calls are told apart by a number that each carries to the service. Any thread may use it.
class Ledger {
  public:
    // Smaller numbers in the journal are something else.
    static constexpr int kFirstNumber = 100000;

    // A call has ended. `answered` says that its caller was told so; otherwise the service may have
    // received it or not. `result` is what the service must have answered, where that can be told.
    // `name` must outlive this object.
    void called(int n, const char* name, bool answered, const std::optional<std::string>& result);
    // A line of the service's journal.
    void received(const std::string& line);
    // The service has been killed and all of its journal been read: what has failed before its
    // predecessor ended will not turn up any more.
    void serviceEnded();

    // How many calls were answered and are in the journal with the same result.
    int agreed() const { return mAgreed; }
    // What does not agree, for people; empty when all does. For when no call is under way.
    std::string disagreements() const;

  private:
    struct Call {
        const char* name;
        bool answered;
        std::optional<std::string> result;
    };
    using Results = std::unordered_map<int, std::string>;

    void compare(int n, const Call& call, const std::string& received) REQUIRES(mMutex);

    mutable std::mutex mMutex;
    std::unordered_map<int, Call> mAnswered GUARDED_BY(mMutex);  // not found in the journal yet
    Results mReceived GUARDED_BY(mMutex);  // whose callers do not know the outcome yet
    std::unordered_map<int, Call> mFailed GUARDED_BY(mMutex);
    std::unordered_map<int, Call> mFailedBefore GUARDED_BY(mMutex);
    std::string mDisagreements GUARDED_BY(mMutex);
    std::atomic<int> mAgreed = 0;
};

}  // namespace soak
