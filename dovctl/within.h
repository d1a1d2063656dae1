// Calls that may never return: a stopped service blocks every call, over sockets even the look-up.
#pragma once

#include <chrono>
#include <future>
#include <optional>
#include <thread>
#include <type_traits>
#include <utility>

namespace dovctl {

// Runs `task` on a thread of its own. The thread may outlive the caller, so the task must own
// everything that it uses.
template <typename Task>
std::future<std::invoke_result_t<Task>> inBackground(Task task) {
    std::packaged_task<std::invoke_result_t<Task>()> packaged(std::move(task));
    auto result = packaged.get_future();
    std::thread(std::move(packaged)).detach();
    return result;
}

// The result of `task`, or nothing if it has none within `time`. Its thread then runs on.
template <typename Task>
std::optional<std::invoke_result_t<Task>> within(std::chrono::milliseconds time, Task task) {
    auto result = inBackground(std::move(task));
    if (result.wait_for(time) != std::future_status::ready) return std::nullopt;
    return result.get();
}

}  // namespace dovctl
