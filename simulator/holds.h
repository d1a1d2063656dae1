// What is held: every acquired request and every active rule, and what value each resource has by
// them.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <android-base/thread_annotations.h>

#include "simulator/resources.h"

namespace simulator {

// Who holds: a request by its handle, or a rule by its id.
struct Holder {
    enum Source { kRequest, kRule } source = kRequest;
    int32_t number = 0;

    auto operator<=>(const Holder&) const = default;
};

// The holder as people write it: "handle 3" or "rule 14".
std::string textOf(const Holder& holder);

struct Hold {
    Holder holder;
    int32_t requestType = 0;
    std::optional<int32_t> subject;  // event or scene id
    std::vector<MirxRequestData> resources;  // what it sets
    std::string package;
    std::string identity;
    int32_t pid = 0;
    int64_t duration = 0;  // milliseconds; 0 or less holds until it is ended
    std::string name;  // what the profile calls its event, scene or rule
    std::chrono::steady_clock::time_point since = {};  // set by Holds
};

// What it is held for: "event acquire 0 ACTION_LAUNCH", or "status 1" of a rule.
std::string subjectOf(const Hold& hold);

enum class End { kReleased, kTimedOut, kReplaced };

// Why a hold ended, as people say it.
const char* textOf(End end);

// The table of holds. Any thread may use it. Ends holds whose time has run out on a thread of its
// own.
class Holds {
  public:
    struct Callbacks {
        // A hold has ended.
        std::function<void(const Hold& hold, End end)> onEnd;
        // Resources have another effective value than before; one element each, with the value that
        // shows now.
        std::function<void(std::vector<MirxRequestData> changed)> onChange;
        // The table has changed: which hold has ended and which has begun (null for none), and the
        // resources that have another effective value. Comes with the table locked, so in the order
        // in which things happen, and must not use the table. Optional.
        std::function<void(const Hold* ended, End end, const Hold* begun,
                           const std::vector<MirxRequestData>& changed)>
                onStep;
    };

    // The other callbacks are made with no lock held. All come on the thread that made the change
    // or on the timer's.
    explicit Holds(Callbacks callbacks);
    ~Holds();

    // Adds a request under a handle that is in use nowhere, 1 or more; returns the handle. The
    // holder in `hold` is ignored.
    int32_t add(Hold hold);
    // Adds a hold for its own holder, in place of what that one held.
    void put(Hold hold);
    // Ends a hold. Returns false when the holder holds nothing.
    bool end(const Holder& holder);

    // What is held now, oldest first.
    std::vector<Hold> current() const;
    // The value that shows: the newest hold's, or the idle value. None when nobody holds a resource
    // that is unknown.
    std::optional<std::string> effectiveValue(const ResourceKey& key) const;
    // Every held resource with the value that shows and the holder that it comes from.
    std::map<ResourceKey, std::pair<std::string, Holder>> effective() const;

  private:
    using Clock = std::chrono::steady_clock;
    struct Entry {
        Hold hold;
        Clock::time_point deadline;  // Clock::time_point::max() for none
    };
    // What the callbacks are told of once the table is unlocked.
    struct Step {
        std::optional<Hold> ended;
        End end = End::kReplaced;
        std::vector<MirxRequestData> changed;
    };

    int32_t freeHandle();
    // Takes out what `holder` holds and adds `hold`, either of which may be missing; then calls
    // back. Returns whether a hold has ended.
    bool change(const Holder& holder, std::optional<Hold> hold, End end) EXCLUDES(mMutex);
    Step replace(const Holder& holder, std::optional<Hold> hold, End end) REQUIRES(mMutex);
    void tell(Step step) EXCLUDES(mMutex);
    std::optional<std::string> effectiveValueLocked(const ResourceKey& key) const REQUIRES(mMutex);
    // Waits until the time of a hold has run out and ends it. None when the table goes.
    std::optional<Step> nextTimeout();
    void runTimer();

    const Callbacks mCallbacks;
    mutable std::mutex mMutex;
    std::condition_variable mChanged;
    std::list<Entry> mEntries GUARDED_BY(mMutex);  // oldest first
    int32_t mLastHandle GUARDED_BY(mMutex) = 0;
    bool mStopped GUARDED_BY(mMutex) = false;
    std::thread mTimer;
};

}  // namespace simulator
