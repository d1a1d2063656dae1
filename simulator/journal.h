// The lines that the simulator prints.
#pragma once

#include <mutex>
#include <ostream>
#include <string>
#include <vector>

#include <android-base/thread_annotations.h>

#include "simulator/text.h"

namespace simulator {

// Writes whole lines, with control characters escaped. Any thread may use it.
class Journal {
  public:
    explicit Journal(std::ostream& out) : mOut(out) {}

    void line(const std::string& text) { table(text, {}); }

    // Writes a line and indented lines below it in one piece.
    void table(const std::string& title, const std::vector<std::string>& lines) {
        std::lock_guard lock(mMutex);
        mOut << printable(title) << '\n';
        for (const std::string& line : lines) mOut << "    " << printable(line) << '\n';
        mOut.flush();
    }

  private:
    std::mutex mMutex;
    std::ostream& mOut GUARDED_BY(mMutex);
};

}  // namespace simulator
