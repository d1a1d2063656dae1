// What clients hold: every acquired request until it is released or its time runs out.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <aidl/vendor/tavro/hardware/mirx/MirxRequestData.h>

namespace simulator {

using aidl::vendor::tavro::hardware::mirx::MirxRequestData;

// One acquired request.
struct Hold {
    std::string owner;  // who acquired it, for people
    std::vector<MirxRequestData> data;  // the data list that the request brought
    int64_t duration = 0;  // milliseconds; 0 or less holds until it is released
};

// Why a hold ended.
enum class End { kReleased, kTimedOut, kReplaced };

// The table of holds. Any thread may use it. Ends holds whose time has run out on a thread of its
// own.
class Holds {
  public:
    using OnEnd = std::function<void(int32_t handle, const Hold& hold, End end)>;

    // `onEnd` is called after a hold has ended, with no lock held.
    explicit Holds(OnEnd onEnd);
    ~Holds();

    // Adds a hold under a handle that is in use nowhere; returns the handle, 1 or more.
    int32_t add(Hold hold);
    // Adds a hold under the caller's handle, in place of what that handle held.
    void addAs(int32_t handle, Hold hold);
    // Ends a hold. Returns false when the handle holds nothing.
    bool release(int32_t handle);
    // What is held now, by handle.
    std::map<int32_t, Hold> current() const;

  private:
    using Clock = std::chrono::steady_clock;
    struct Entry {
        Hold hold;
        Clock::time_point deadline;  // Clock::time_point::max() for none
    };

    void expire();
    static Clock::time_point deadlineOf(const Hold& hold);

    const OnEnd mOnEnd;
    mutable std::mutex mMutex;
    std::condition_variable mChanged;
    std::map<int32_t, Entry> mEntries;
    int32_t mLastHandle = 0;
    bool mStopped = false;
    std::thread mTimer;
};

}  // namespace simulator
