// Waits for a condition.
#pragma once

#include <chrono>
#include <functional>
#include <thread>

// Waits until `condition` is true. Returns false if it is still false after `time`.
inline bool eventually(const std::function<bool()>& condition,
                       std::chrono::seconds time = std::chrono::seconds(10)) {
    const auto end = std::chrono::steady_clock::now() + time;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}
