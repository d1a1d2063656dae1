// Compares the answers that callers got with the calls in the service's journal.
#pragma once

#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

#include <android-base/thread_annotations.h>

namespace soak {

// Identifies each call by a number that it sends to the service. Thread-safe.
class Ledger {
  public:
    // Smaller numbers in the journal are not numbers of calls.
    static constexpr int kFirstNumber = 100000;

    // Records that call `n` has ended. If it was not `answered`, the service may have received it
    // or not. `result` is the answer of the service, if the caller knows it. `name` must outlive
    // this object.
    void called(int n, const char* name, bool answered, const std::optional<std::string>& result);
    // Records a line of the service's journal.
    void received(const std::string& line);
    // Records that the service was killed and its whole journal was read. Calls that failed before
    // the previous service ended can no longer appear in a journal.
    void serviceEnded();

    // The number of calls that were answered and are in the journal with the same result.
    int agreed() const { return mAgreed; }
    // Describes the calls that do not agree; empty if all do. Call this while no call is running.
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
    std::unordered_map<int, Call> mAnswered GUARDED_BY(mMutex);  // not in the journal yet
    Results mReceived GUARDED_BY(mMutex);  // outcome not known to the caller yet
    std::unordered_map<int, Call> mFailed GUARDED_BY(mMutex);
    std::unordered_map<int, Call> mFailedBefore GUARDED_BY(mMutex);
    std::string mDisagreements GUARDED_BY(mMutex);
    std::atomic<int> mAgreed = 0;
};

}  // namespace soak
