// Catches what the library under test logs.
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

// From construction on, this process's log lines go here and nowhere else; the platform's own tags
// are left out.
class LogCapture {
  public:
    LogCapture();

    // The lines since the last call, or since the beginning; forgets them.
    std::vector<LogLine> take();
};
