// The service that already runs when the simulator starts.
#pragma once

#include <future>
#include <memory>
#include <string>

#include <aidl/vendor/tavro/hardware/mirx/IMirx.h>

namespace simulator {

// Calls the running service on separate threads and waits two seconds for each answer, because the
// service may hang.
class Predecessor {
  public:
    explicit Predecessor(const std::string& instance);

    // The replaced service, as "process 123"; empty when no service runs.
    const std::string& name() const { return mName; }
    // Tells a simulator that it was replaced, so that it ends. If it hangs, it ends later.
    void tell() const;

  private:
    struct Running {
        std::shared_ptr<aidl::vendor::tavro::hardware::mirx::IMirx> service;
        std::string pid;  // empty: not a simulator
    };

    std::shared_future<Running> mRunning;
    std::string mName;
};

}  // namespace simulator
