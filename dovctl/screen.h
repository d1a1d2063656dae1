// A terminal to draw on.
#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace dovctl {

// Has the terminal to itself as long as it lives.
class Screen {
  public:
    enum class Event { kTime, kQuit };

    virtual ~Screen() = default;

    // Shows the lines from the top on, cut to the screen's size, in place of what was there.
    virtual void draw(const std::vector<std::string>& lines) = 0;

    // Waits for `time`, less when everything has to be drawn again, or until the user quits.
    virtual Event wait(std::chrono::milliseconds time) = 0;
};

}  // namespace dovctl
