// Lets a command wait for Ctrl-C or for an event.
#pragma once

#include <chrono>

namespace dovctl {

class Waiter {
  public:
    virtual ~Waiter() = default;

    // From now on Ctrl-C ends the next wait(). Before, it ends the program at once.
    virtual void expectInterrupt() = 0;

    // Waits for Ctrl-C or wake(), for at most `time`. Returns whether Ctrl-C was pressed.
    virtual bool wait(std::chrono::milliseconds time) = 0;

    // Ends the current or next wait. Safe from any thread.
    virtual void wake() = 0;
};

}  // namespace dovctl
