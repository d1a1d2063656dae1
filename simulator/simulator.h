// The simulator as an object, which a test can run in its own process.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "simulator/journal.h"
#include "simulator/mirx_service.h"
#include "simulator/timeline.h"

namespace simulator {

class Simulator {
  public:
    // The journal goes to `out`, errors to `err`; both must outlive the object. `onReplaced` is
    // called when another simulator has taken the name over.
    Simulator(
            std::ostream& out, std::ostream& err, std::function<void()> onReplaced = [] {})
        : mErr(err), mOut(out), mJournal(out), mOnReplaced(std::move(onReplaced)) {}

    // Reads a command line without the program's name and registers the service. Returns the exit
    // code when there is nothing to serve: help was asked for, or an error was printed. Once it has
    // registered, the object must outlive every call of the service.
    std::optional<int> start(const std::vector<std::string>& args);

    // Completes the timeline.
    void stop();

  private:
    std::optional<int> fail(int code, const std::string& why);

    std::ostream& mErr;
    std::ostream& mOut;
    Journal mJournal;
    const std::function<void()> mOnReplaced;
    std::unique_ptr<Timeline> mTimeline;
    std::shared_ptr<MirxService> mService;
};

}  // namespace simulator
