// The lines that the simulator prints.
#pragma once

#include <mutex>
#include <ostream>
#include <string>

#include <android-base/thread_annotations.h>

namespace simulator {

// Writes whole lines, each at once. Any thread may use it.
class Journal {
  public:
    explicit Journal(std::ostream& out) : mOut(out) {}

    void line(const std::string& text) {
        std::lock_guard lock(mMutex);
        mOut << text << std::endl;
    }

  private:
    std::mutex mMutex;
    std::ostream& mOut GUARDED_BY(mMutex);
};

}  // namespace simulator
