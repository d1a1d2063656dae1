// Presses Ctrl-C for commands that run within a test.
#pragma once

#include "dovctl/waiter.h"

// Asks each command to end as soon as it waits.
class TestWaiter : public dovctl::Waiter {
  public:
    void expectInterrupt() override {}
    bool wait(std::chrono::milliseconds) override { return true; }
    void wake() override {}
};
