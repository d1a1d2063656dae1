// The faults of the simulator.
#pragma once

#include <condition_variable>
#include <list>
#include <mutex>
#include <string>
#include <vector>

#include <android-base/thread_annotations.h>

#include "simulator/fault.h"

namespace simulator {

// The faults in force. Any thread may use them.
class Faults {
  public:
    // Adds a fault. Returns the error in the text, or an empty text.
    std::string add(const std::string& text);
    // Ends all faults. Waiting calls continue.
    void clear();

    // Counts the call and returns the effect of the faults on it.
    Misbehaviour next(const Call& call);
    // Waits for the delay, or for ever. Ends early when the faults are cleared.
    void wait(const Misbehaviour& misbehaviour);

    // A line for each fault: as it was written, and how often it has happened.
    std::vector<std::string> describe() const;

  private:
    mutable std::mutex mMutex;
    std::condition_variable mCleared;
    int64_t mClearings GUARDED_BY(mMutex) = 0;
    std::list<Fault> mFaults GUARDED_BY(mMutex);
};

}  // namespace simulator
