// Simulates Ctrl-C for commands that run within a test.
#pragma once

#include <functional>
#include <utility>

#include "dovctl/waiter.h"

// Calls `atWait` when a command waits, and then asks the command to end.
class TestWaiter : public dovctl::Waiter {
  public:
    explicit TestWaiter(std::function<void()> atWait = [] {}) : mAtWait(std::move(atWait)) {}

    void expectInterrupt() override {}
    bool wait(std::chrono::milliseconds) override {
        mAtWait();
        return true;
    }
    void wake() override {}

  private:
    std::function<void()> mAtWait;
};
