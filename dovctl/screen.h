// A terminal to draw on.
#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace dovctl {

// Owns the terminal as long as it lives.
class Screen {
  public:
    enum class Event { kTime, kQuit };

    virtual ~Screen() = default;

    // Replaces what is shown by the lines, cut to the screen's size.
    virtual void draw(const std::vector<std::string>& lines) = 0;

    // Waits for `time` or until the user quits. Returns early if the screen must be drawn again.
    virtual Event wait(std::chrono::milliseconds time) = 0;
};

}  // namespace dovctl
