// The last requests, for the history query and the dumps.
#pragma once

#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include <android-base/thread_annotations.h>

#include "simulator/text.h"

namespace simulator {

// Keeps the last requests while recording is on. It is on at the start. Any thread may use it.
class History {
  public:
    void record(const std::string& line) {
        std::lock_guard lock(mMutex);
        if (!mRecording) return;
        mLines.push_back(shortened(line, kLongestLine));
        if (mLines.size() > kMostLines) mLines.pop_front();
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
    // One answer can carry all lines even if each is as long as it may be (message_size.h).
    static constexpr size_t kMostLines = 100;
    static constexpr size_t kLongestLine = 380;

    mutable std::mutex mMutex;
    std::deque<std::string> mLines GUARDED_BY(mMutex);
    bool mRecording GUARDED_BY(mMutex) = true;
};

}  // namespace simulator
