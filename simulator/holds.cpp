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
    Lock lock(mMutex);
    const auto taken = [this](int32_t handle) {
        return std::any_of(mEntries.begin(), mEntries.end(), [&](const Entry& entry) {
            return entry.hold.holder == Holder{Holder::kRequest, handle};
        });
    };
    do {
        mLastHandle = mLastHandle == std::numeric_limits<int32_t>::max() ? 1 : mLastHandle + 1;
    } while (taken(mLastHandle));
    hold.holder = {Holder::kRequest, mLastHandle};
    const int32_t handle = mLastHandle;
    replace(lock, hold.holder, std::move(hold), End::kReplaced);
    return handle;
}

void Holds::put(Hold hold) {
    Lock lock(mMutex);
    const Holder holder = hold.holder;
    replace(lock, holder, std::move(hold), End::kReplaced);
}

bool Holds::end(const Holder& holder) {
    Lock lock(mMutex);
    return replace(lock, holder, std::nullopt, End::kReleased);
}

bool Holds::replace(Lock& lock, const Holder& holder, std::optional<Hold> hold, End end) {
    const auto entry = std::find_if(mEntries.begin(), mEntries.end(), [&](const Entry& candidate) {
        return candidate.hold.holder == holder;
    });
    std::map<ResourceKey, std::optional<std::string>> before;
    const auto remember = [&](const Hold& touched) {
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
    lock.unlock();
    mChanged.notify_all();
    if (ended) mCallbacks.onEnd(*ended, end);
    if (!changed.empty()) mCallbacks.onChange(std::move(changed));
    return ended.has_value();
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

void Holds::runTimer() {
    Lock lock(mMutex);
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
            replace(lock, holder, std::nullopt, End::kTimedOut);
            lock.lock();
        }
    }
}

}  // namespace simulator
