// Captures the log lines of the library under test.
#pragma once

#include <string>
#include <vector>

#include <android/log.h>

struct LogLine {
    int priority;
    std::string tag;
    std::string text;

    bool operator==(const LogLine&) const = default;
};

std::ostream& operator<<(std::ostream& out, const LogLine& line);

// Captures the log lines of this process instead of printing them. Drops those with the platform's
// own tags.
class LogCapture {
  public:
    LogCapture();

    // Returns and clears the captured lines.
    std::vector<LogLine> take();
};
