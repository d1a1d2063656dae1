// Presses Ctrl-C for commands that run within a test, and says how long they may take.
#pragma once

#include <stdlib.h>

#include "dovctl/waiter.h"
#include "tests/support/transport.h"

// Asks each command to end as soon as it waits.
class TestWaiter : public dovctl::Waiter {
  public:
    void expectInterrupt() override {}
    bool wait(std::chrono::milliseconds) override { return true; }
    void wake() override {}
};

// Milliseconds within which a service answers a call, also if the machine is emulated.
inline const char* patience() {
    return overDriver() || getenv("DOV_EMULATOR") != nullptr ? "9999" : "2999";
}
