// Where the library's log lines go while a command runs.
#pragma once

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
};

}  // namespace dovctl
