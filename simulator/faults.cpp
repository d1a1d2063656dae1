// The faults of the simulator.
#include "simulator/faults.h"

#include <utility>

namespace simulator {

std::string Faults::add(const std::string& text) {
    Fault fault;
    std::string error = fault.read(text);
    if (!error.empty()) return error;
    std::lock_guard lock(mMutex);
    mFaults.push_back(std::move(fault));
    return "";
}

void Faults::clear() {
    std::lock_guard lock(mMutex);
    mFaults.clear();
    ++mClearings;
    mCleared.notify_all();
}

Misbehaviour Faults::next(const Call& call) {
    Misbehaviour misbehaviour;
    std::lock_guard lock(mMutex);
    for (Fault& fault : mFaults) {
        if (!fault.applies(call)) continue;
        if (++fault.calls % fault.when.every != 0 || fault.happened == fault.when.times) continue;
        ++fault.happened;
        fault.apply(misbehaviour);
    }
    return misbehaviour;
}

void Faults::wait(const Misbehaviour& misbehaviour) {
    std::unique_lock lock(mMutex);
    const android::base::ScopedLockAssertion locked(mMutex);
    const auto cleared = [this, before = mClearings]()
                                 REQUIRES(mMutex) { return mClearings != before; };
    if (misbehaviour.never) {
        mCleared.wait(lock, cleared);
    } else {
        mCleared.wait_for(lock, misbehaviour.delay, cleared);
    }
}

std::vector<std::string> Faults::describe() const {
    std::lock_guard lock(mMutex);
    std::vector<std::string> lines;
    for (const Fault& fault : mFaults) {
        lines.push_back(fault.text + " (happened " + std::to_string(fault.happened) + " times)");
    }
    return lines;
}

}  // namespace simulator
