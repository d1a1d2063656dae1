// The table of holds: every acquired request and every active rule, and the resulting values.
#include "simulator/holds.h"

#include <algorithm>
#include <utility>

#include "simulator/describe.h"

namespace simulator {
namespace {

using Clock = std::chrono::steady_clock;

Clock::time_point deadlineOf(const Hold& hold) {
    // A duration of more than a century counts as none: it would overflow the clock.
    constexpr int64_t kLongest = int64_t{100} * 366 * 24 * 3600 * 1000;
    if (hold.duration <= 0 || hold.duration > kLongest) return Clock::time_point::max();
    return hold.since + std::chrono::milliseconds(hold.duration);
}

}  // namespace

std::string textOf(const Holder& holder) {
    return (holder.source == Holder::kRule ? "rule " : "handle ") + std::to_string(holder.number);
}

std::string subjectOf(const Hold& hold) {
    std::string text =
            hold.holder.source == Holder::kRule ? "status" : requestKindName(hold.requestType);
    if (hold.subject) text += " " + std::to_string(*hold.subject);
    return hold.name.empty() ? text : text + " " + hold.name;
}

const char* textOf(End end) {
    switch (end) {
        case End::kReleased: return "released";
        case End::kTimedOut: return "time ran out";
        case End::kReplaced: return "replaced";
    }
    return "";
}

Holds::Holds(Observer observer) : mObserver(std::move(observer)), mTimer([this] { runTimer(); }) {}

Holds::~Holds() {
    {
        std::lock_guard lock(mMutex);
        mStopped = true;
    }
    mChanged.notify_all();
    mTimer.join();
}

int32_t Holds::add(Hold hold) {
    std::lock_guard lock(mMutex);
    Holder holder;
    do {
        holder.number = mHandles.next();
    } while (find(holder) != mHolds.end());  // a client has chosen this handle itself
    hold.holder = holder;
    replace(holder, std::move(hold), End::kReplaced);
    return holder.number;
}

void Holds::put(Hold hold) {
    std::lock_guard lock(mMutex);
    const Holder holder = hold.holder;
    replace(holder, std::move(hold), End::kReplaced);
}

bool Holds::end(const Holder& holder) {
    std::lock_guard lock(mMutex);
    return replace(holder, std::nullopt, End::kReleased);
}

std::list<Hold>::iterator Holds::find(const Holder& holder) {
    return std::find_if(mHolds.begin(), mHolds.end(),
                        [&](const Hold& hold) { return hold.holder == holder; });
}

bool Holds::replace(const Holder& holder, std::optional<Hold> hold, End why) {
    const auto earlier = find(holder);
    std::map<ResourceKey, std::optional<std::string>> before;
    const auto remember = [&](const Hold& touched) REQUIRES(mMutex) {
        for (const MirxRequestData& data : touched.resources) {
            before.try_emplace(keyOf(data), effectiveValueLocked(keyOf(data)));
        }
    };
    if (earlier != mHolds.end()) remember(*earlier);
    if (hold) remember(*hold);

    Step step{.why = why};
    std::list<Hold> ended;
    if (earlier != mHolds.end()) {
        ended.splice(ended.end(), mHolds, earlier);
        step.ended = &ended.back();
    }
    if (hold) {
        hold->since = Clock::now();
        hold->deadline = deadlineOf(*hold);
        step.begun = &mHolds.emplace_back(std::move(*hold));
    }
    for (const auto& [key, value] : before) {
        const auto now = effectiveValueLocked(key);
        if (now == value) continue;
        MirxRequestData data = {.id = key.opcode, .value = now};
        if (!key.path.empty()) data.path = key.path;
        step.changed.push_back(std::move(data));
    }
    if (step.ended == nullptr && step.begun == nullptr) return false;
    mObserver(step);
    mChanged.notify_all();
    return step.ended != nullptr;
}

std::vector<Hold> Holds::current() const {
    std::lock_guard lock(mMutex);
    return {mHolds.begin(), mHolds.end()};
}

std::optional<std::string> Holds::effectiveValue(const ResourceKey& key) const {
    std::lock_guard lock(mMutex);
    return effectiveValueLocked(key);
}

std::optional<std::string> Holds::effectiveValueLocked(const ResourceKey& key) const {
    for (auto hold = mHolds.rbegin(); hold != mHolds.rend(); ++hold) {
        const auto& resources = hold->resources;
        // Of two settings of a resource in one request the later one counts.
        for (auto data = resources.rbegin(); data != resources.rend(); ++data) {
            if (keyOf(*data) == key) return data->value.value_or("");
        }
    }
    return idleValueOf(key);
}

std::map<ResourceKey, std::pair<std::string, Holder>> Holds::effective() const {
    std::lock_guard lock(mMutex);
    std::map<ResourceKey, std::pair<std::string, Holder>> values;
    for (const Hold& hold : mHolds) {
        for (const MirxRequestData& data : hold.resources) {
            values[keyOf(data)] = {data.value.value_or(""), hold.holder};
        }
    }
    return values;
}

void Holds::runTimer() {
    std::unique_lock lock(mMutex);
    const android::base::ScopedLockAssertion locked(mMutex);
    while (!mStopped) {
        const auto next = std::min_element(
                mHolds.begin(), mHolds.end(),
                [](const Hold& a, const Hold& b) { return a.deadline < b.deadline; });
        if (next == mHolds.end() || next->deadline == Clock::time_point::max()) {
            mChanged.wait(lock);
        } else if (next->deadline > Clock::now()) {
            const auto deadline = next->deadline;
            mChanged.wait_until(lock, deadline);
        } else {
            const Holder holder = next->holder;
            replace(holder, std::nullopt, End::kTimedOut);
        }
    }
}

}  // namespace simulator
