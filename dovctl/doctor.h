// Finds out why nothing happens: the steps of a request, tried one by one.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <memory>
#include <span>
#include <string>

#include "common/service.h"
#include "common/transport.h"
#include "dovctl/exit_code.h"

namespace dovctl {

struct Finding {
    enum State { kOk, kFailed, kNotTried } state;
    std::string what;  // what was found, or the cause of the failure
    std::string advice;  // what to do about it
};

// What one step leaves for the next ones.
struct Patient {
    dovcommon::Transport transport;
    std::chrono::milliseconds patience;  // for each answer
    bool declared = false;
    std::shared_ptr<dovcommon::IMirx> mirx = nullptr;
};

struct Step {
    const char* name;
    Finding (*examine)(Patient& patient);
    ExitCode failure;  // what the program ends with when it fails
};

// In the order in which things go wrong; a step presumes that those before it went well.
std::span<const Step> doctorSteps();

}  // namespace dovctl
