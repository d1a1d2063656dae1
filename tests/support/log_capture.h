// Captures the log lines of the library under test.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <android/log.h>

struct LogLine {
    int priority;
    std::string tag;
    std::string text;

    bool operator==(const LogLine&) const = default;
};

std::ostream& operator<<(std::ostream& out, const LogLine& line);

// Captures the log lines of this process instead of printing them. Drops those of the binder
// stack, which arrive at any time.
class LogCapture {
  public:
    LogCapture();

    // Returns and clears the captured lines.
    std::vector<LogLine> take();
    // Returns and clears the captured lines as text: each with the letter of its priority, and with
    // its tag if that is not `usualTag`. Drops the line about a callback object that was destroyed:
    // that happens when the service's side has released the object.
    std::string text(std::string_view usualTag);
};
