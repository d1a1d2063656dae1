// The table of holds: every acquired request and every active rule, and the resulting values.
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

#include "simulator/handles.h"
#include "simulator/resources.h"

namespace simulator {

// The owner of a hold: a request by its handle, or a rule by its id.
struct Holder {
    enum Source { kRequest, kRule } source = kRequest;
    int32_t number = 0;

    bool operator==(const Holder&) const = default;
};

// "handle 3" or "rule 14".
std::string textOf(const Holder& holder);

struct Hold {
    Holder holder;
    int32_t requestType = 0;
    std::optional<int32_t> subject;  // event or scene id
    std::vector<MirxRequestData> resources;  // its settings
    std::string package;
    std::string identity;
    int32_t pid = 0;  // of the client; 0 if neither transport nor parcel has it
    int64_t duration = 0;  // milliseconds; 0 or less holds until released
    std::string name;  // the profile's name for the event, scene or rule
    // Set by Holds. A hold that ends only when it is released has the latest time as its deadline.
    std::chrono::steady_clock::time_point since = {};
    std::chrono::steady_clock::time_point deadline = {};
};

// The purpose of the hold: "event acquire 0 ACTION_LAUNCH", or "status 1" of a rule.
std::string subjectOf(const Hold& hold);

enum class End { kReleased, kTimedOut, kReplaced };

// The reason as text.
const char* textOf(End end);

// One change of the table. A hold that replaces an earlier one ends that one in the same step.
struct Step {
    const Hold* ended = nullptr;  // null when no hold ended
    End why = End::kReleased;  // why `ended` ended
    const Hold* begun = nullptr;  // null when no hold began
    // The resources whose effective value changed, each with its new value.
    std::vector<MirxRequestData> changed;
};

// The table of holds. Any thread may use it. A timer thread ends holds whose time has run out.
class Holds {
  public:
    // Called for each step with the table locked, so in the order of the steps. Must not use the
    // table and should not block.
    using Observer = std::function<void(const Step& step)>;

    explicit Holds(Observer observer);
    ~Holds();

    // Adds a request under a new handle and returns the handle. Ignores the holder in `hold`.
    int32_t add(Hold hold);
    // Adds a hold for its own holder and ends the hold that this holder had before.
    void put(Hold hold);
    // Ends a hold. Returns false when the holder holds nothing.
    bool end(const Holder& holder);

    // The current holds, oldest first.
    std::vector<Hold> current() const;
    // The newest hold's value of a resource, or its idle value. None for an unknown resource that
    // nobody holds.
    std::optional<std::string> effectiveValue(const ResourceKey& key) const;
    // Every held resource with its effective value and the holder that set it.
    std::map<ResourceKey, std::pair<std::string, Holder>> effective() const;

  private:
    std::list<Hold>::iterator find(const Holder& holder) REQUIRES(mMutex);
    // Removes the hold of `holder` and adds `hold`, either of which may be absent, and calls the
    // observer. Returns whether a hold has ended.
    bool replace(const Holder& holder, std::optional<Hold> hold, End why) REQUIRES(mMutex);
    std::optional<std::string> effectiveValueLocked(const ResourceKey& key) const REQUIRES(mMutex);
    void runTimer();

    const Observer mObserver;
    mutable std::mutex mMutex;
    std::condition_variable mChanged;
    std::list<Hold> mHolds GUARDED_BY(mMutex);  // oldest first
    HandleSource mHandles GUARDED_BY(mMutex);
    bool mStopped GUARDED_BY(mMutex) = false;
    std::thread mTimer;
};

}  // namespace simulator
