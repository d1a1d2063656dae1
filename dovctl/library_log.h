// The log of the library and of libbinder while a command runs.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "dovctl/console.h"

namespace dovctl {

// While it lives, log lines of the whole process go to `console`'s error stream as
// "I [TAG] text" or, if not `verbose`, nowhere; afterwards nowhere. One at a time.
class LibraryLog {
  public:
    LibraryLog(Console& console, bool verbose);
    ~LibraryLog();
    LibraryLog(const LibraryLog&) = delete;
    LibraryLog& operator=(const LibraryLog&) = delete;

    // The texts of what was logged at warning priority and above since the last forget(). The
    // latest ones: a command may run for days.
    std::vector<std::string> problems() const;
    // Whether one of them contains `part`.
    bool has(std::string_view part) const;
    void forget();
};

}  // namespace dovctl
