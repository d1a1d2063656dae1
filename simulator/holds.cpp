// What clients hold: every acquired request until it is released or its time runs out.
#include "simulator/holds.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace simulator {

Holds::Holds(OnEnd onEnd) : mOnEnd(std::move(onEnd)), mTimer([this] { expire(); }) {}

Holds::~Holds() {
    {
        std::lock_guard lock(mMutex);
        mStopped = true;
    }
    mChanged.notify_all();
    mTimer.join();
}

Holds::Clock::time_point Holds::deadlineOf(const Hold& hold) {
    // A duration beyond a century is as good as none, and must not overflow the clock.
    constexpr int64_t kLongest = int64_t{100} * 366 * 24 * 3600 * 1000;
    if (hold.duration <= 0 || hold.duration > kLongest) return Clock::time_point::max();
    return Clock::now() + std::chrono::milliseconds(hold.duration);
}

int32_t Holds::add(Hold hold) {
    int32_t handle;
    {
        std::lock_guard lock(mMutex);
        do {
            mLastHandle = mLastHandle == std::numeric_limits<int32_t>::max() ? 1 : mLastHandle + 1;
        } while (mEntries.contains(mLastHandle));
        handle = mLastHandle;
        const auto deadline = deadlineOf(hold);
        mEntries[handle] = {std::move(hold), deadline};
    }
    mChanged.notify_all();
    return handle;
}

void Holds::addAs(int32_t handle, Hold hold) {
    std::unique_lock lock(mMutex);
    const auto replaced = mEntries.extract(handle);
    const auto deadline = deadlineOf(hold);
    mEntries[handle] = {std::move(hold), deadline};
    lock.unlock();
    mChanged.notify_all();
    if (!replaced.empty()) mOnEnd(handle, replaced.mapped().hold, End::kReplaced);
}

bool Holds::release(int32_t handle) {
    std::unique_lock lock(mMutex);
    const auto node = mEntries.extract(handle);
    lock.unlock();
    if (node.empty()) return false;
    mOnEnd(handle, node.mapped().hold, End::kReleased);
    return true;
}

std::map<int32_t, Hold> Holds::current() const {
    std::lock_guard lock(mMutex);
    std::map<int32_t, Hold> holds;
    for (const auto& [handle, entry] : mEntries) holds[handle] = entry.hold;
    return holds;
}

void Holds::expire() {
    std::unique_lock lock(mMutex);
    while (!mStopped) {
        const auto next = std::min_element(
                mEntries.begin(), mEntries.end(),
                [](const auto& a, const auto& b) { return a.second.deadline < b.second.deadline; });
        if (next == mEntries.end() || next->second.deadline == Clock::time_point::max()) {
            mChanged.wait(lock);
        } else if (next->second.deadline > Clock::now()) {
            const auto deadline = next->second.deadline;
            mChanged.wait_until(lock, deadline);
        } else {
            const auto node = mEntries.extract(next);
            lock.unlock();
            mOnEnd(node.key(), node.mapped().hold, End::kTimedOut);
            lock.lock();
        }
    }
}

}  // namespace simulator
