// What is held: every acquired request and every active rule, and what value each resource has by
// them.
#include "simulator/holds.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "simulator/describe.h"

namespace simulator {
namespace {

using Clock = std::chrono::steady_clock;

Clock::time_point deadlineOf(const Hold& hold) {
    // A duration beyond a century is as good as none, and must not overflow the clock.
    constexpr int64_t kLongest = int64_t{100} * 366 * 24 * 3600 * 1000;
    if (hold.duration <= 0 || hold.duration > kLongest) return Clock::time_point::max();
    return Clock::now() + std::chrono::milliseconds(hold.duration);
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

Holds::Holds(Callbacks callbacks)
    : mCallbacks(std::move(callbacks)), mTimer([this] { runTimer(); }) {}

Holds::~Holds() {
    {
        std::lock_guard lock(mMutex);
        mStopped = true;
    }
    mChanged.notify_all();
    mTimer.join();
}

int32_t Holds::add(Hold hold) {
    const int32_t handle = freeHandle();
    hold.holder = {Holder::kRequest, handle};
    put(std::move(hold));
    return handle;
}

void Holds::put(Hold hold) {
    const Holder holder = hold.holder;
    change(holder, std::move(hold), End::kReplaced);
}

bool Holds::end(const Holder& holder) {
    return change(holder, std::nullopt, End::kReleased);
}

int32_t Holds::freeHandle() {
    std::lock_guard lock(mMutex);
    const auto taken = [](const std::list<Entry>& entries, int32_t handle) {
        return std::any_of(entries.begin(), entries.end(), [&](const Entry& entry) {
            return entry.hold.holder == Holder{Holder::kRequest, handle};
        });
    };
    do {
        mLastHandle = mLastHandle == std::numeric_limits<int32_t>::max() ? 1 : mLastHandle + 1;
    } while (taken(mEntries, mLastHandle));
    return mLastHandle;
}

bool Holds::change(const Holder& holder, std::optional<Hold> hold, End end) {
    Step step;
    {
        std::lock_guard lock(mMutex);
        step = replace(holder, std::move(hold), end);
    }
    const bool hasEnded = step.ended.has_value();
    tell(std::move(step));
    return hasEnded;
}

Holds::Step Holds::replace(const Holder& holder, std::optional<Hold> hold, End end) {
    const auto entry = std::find_if(mEntries.begin(), mEntries.end(), [&](const Entry& candidate) {
        return candidate.hold.holder == holder;
    });
    std::map<ResourceKey, std::optional<std::string>> before;
    const auto remember = [&](const Hold& touched) REQUIRES(mMutex) {
        for (const MirxRequestData& data : touched.resources) {
            before.try_emplace(keyOf(data), effectiveValueLocked(keyOf(data)));
        }
    };
    if (entry != mEntries.end()) remember(entry->hold);
    if (hold) remember(*hold);

    std::optional<Hold> ended;
    if (entry != mEntries.end()) {
        ended = std::move(entry->hold);
        mEntries.erase(entry);
    }
    const bool begins = hold.has_value();
    if (begins) {
        const auto deadline = deadlineOf(*hold);
        hold->since = Clock::now();
        mEntries.push_back({std::move(*hold), deadline});
    }

    std::vector<MirxRequestData> changed;
    for (const auto& [key, value] : before) {
        const auto now = effectiveValueLocked(key);
        if (now == value) continue;
        MirxRequestData& data = changed.emplace_back();
        data.id = key.opcode;
        data.value = now;
        if (!key.path.empty()) data.path = key.path;
    }
    if (mCallbacks.onStep && (ended || begins)) {
        mCallbacks.onStep(ended ? &*ended : nullptr, end, begins ? &mEntries.back().hold : nullptr,
                          changed);
    }
    return {std::move(ended), end, std::move(changed)};
}

void Holds::tell(Step step) {
    mChanged.notify_all();
    if (step.ended) mCallbacks.onEnd(*step.ended, step.end);
    if (!step.changed.empty()) mCallbacks.onChange(std::move(step.changed));
}

std::vector<Hold> Holds::current() const {
    std::lock_guard lock(mMutex);
    std::vector<Hold> holds;
    for (const Entry& entry : mEntries) holds.push_back(entry.hold);
    return holds;
}

std::optional<std::string> Holds::effectiveValue(const ResourceKey& key) const {
    std::lock_guard lock(mMutex);
    return effectiveValueLocked(key);
}

std::optional<std::string> Holds::effectiveValueLocked(const ResourceKey& key) const {
    for (auto entry = mEntries.rbegin(); entry != mEntries.rend(); ++entry) {
        const auto& resources = entry->hold.resources;
        // Of two settings in one request the later one counts.
        for (auto data = resources.rbegin(); data != resources.rend(); ++data) {
            if (keyOf(*data) == key) return data->value.value_or("");
        }
    }
    return idleValueOf(key);
}

std::map<ResourceKey, std::pair<std::string, Holder>> Holds::effective() const {
    std::lock_guard lock(mMutex);
    std::map<ResourceKey, std::pair<std::string, Holder>> values;
    for (const Entry& entry : mEntries) {
        for (const MirxRequestData& data : entry.hold.resources) {
            values[keyOf(data)] = {data.value.value_or(""), entry.hold.holder};
        }
    }
    return values;
}

std::optional<Holds::Step> Holds::nextTimeout() {
    std::unique_lock lock(mMutex);
    const android::base::ScopedLockAssertion locked(mMutex);
    while (!mStopped) {
        const auto next = std::min_element(
                mEntries.begin(), mEntries.end(),
                [](const Entry& a, const Entry& b) { return a.deadline < b.deadline; });
        if (next == mEntries.end() || next->deadline == Clock::time_point::max()) {
            mChanged.wait(lock);
        } else if (next->deadline > Clock::now()) {
            const auto deadline = next->deadline;
            mChanged.wait_until(lock, deadline);
        } else {
            const Holder holder = next->hold.holder;
            return replace(holder, std::nullopt, End::kTimedOut);
        }
    }
    return std::nullopt;
}

void Holds::runTimer() {
    while (auto step = nextTimeout()) tell(std::move(*step));
}

}  // namespace simulator
