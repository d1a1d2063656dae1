// The service that already runs when the simulator starts.
#include "simulator/predecessor.h"

#include <unistd.h>

#include <chrono>
#include <thread>
#include <utility>

#include <android/binder_manager.h>

namespace simulator {

using aidl::vendor::tavro::hardware::mirx::IMirx;

namespace {

constexpr std::chrono::seconds kLongest(2);

// Calls `function` on a new thread.
template <typename Function>
auto start(Function function) {
    std::packaged_task<decltype(function())()> task(std::move(function));
    auto result = task.get_future().share();
    std::thread(std::move(task)).detach();
    return result;
}

}  // namespace

Predecessor::Predecessor(const std::string& instance)
    : mRunning(start([instance] {
          Running running;
          running.service = IMirx::fromBinder(
                  ndk::SpAIBinder(AServiceManager_checkService(instance.c_str())));
          if (running.service != nullptr) {
              running.service->propertyGet("simulator.pid", &running.pid);
          }
          // In a test, an earlier service of this process may be registered.
          return running.pid == std::to_string(getpid()) ? Running{} : running;
      })) {
    if (mRunning.wait_for(kLongest) != std::future_status::ready) {
        mName = "a service that does not answer";
    } else if (const Running& running = mRunning.get(); !running.pid.empty()) {
        mName = "process " + running.pid;
    } else if (running.service != nullptr) {
        mName = "a service that is not a simulator";
    }
}

void Predecessor::tell() const {
    if (mName.empty()) return;
    const auto told = start([running = mRunning] {
        if (running.get().pid.empty()) return;
        int32_t result = 0;
        running.get().service->propertySet("simulator.replaced", std::to_string(getpid()), &result);
    });
    told.wait_for(kLongest);
}

}  // namespace simulator
