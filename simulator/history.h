// The requests that the simulator has received, as its history query and its dumps show them.
#pragma once

#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include <android-base/thread_annotations.h>

namespace simulator {

// Keeps the last requests while recording is on, which it is from the start. Any thread may use it.
class History {
  public:
    void record(const std::string& line) {
        std::lock_guard lock(mMutex);
        if (!mRecording) return;
        mLines.push_back(line);
        if (mLines.size() > kLongest) mLines.pop_front();
    }

    void setRecording(bool on) {
        std::lock_guard lock(mMutex);
        mRecording = on;
    }

    std::vector<std::string> lines() const {
        std::lock_guard lock(mMutex);
        return {mLines.begin(), mLines.end()};
    }

  private:
    static constexpr size_t kLongest = 100;

    mutable std::mutex mMutex;
    std::deque<std::string> mLines GUARDED_BY(mMutex);
    bool mRecording GUARDED_BY(mMutex) = true;
};

}  // namespace simulator
