// Diagnoses why nothing happens: tries the steps of a request one by one.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <memory>
#include <span>
#include <string>

#include "common/service.h"
#include "common/transport.h"
#include "dovctl/exit_code.h"
#include "dovctl/library_log.h"

namespace dovctl {

struct Finding {
    enum State { kOk, kFailed, kNotTried } state;
    std::string what;  // the finding, or the cause of the failure
    std::string advice;  // what to do about the failure
};

// Results of the earlier steps.
struct Patient {
    dovcommon::Transport transport;
    std::chrono::milliseconds patience;  // for each answer
    const LibraryLog* log;
    bool declared = false;
    std::shared_ptr<dovcommon::IMirx> mirx = nullptr;
};

struct Step {
    const char* name;
    Finding (*examine)(Patient& patient);
    ExitCode failure;  // the program's exit code if the step fails
};

// In the order of a request. A step may assume that those before it succeeded.
std::span<const Step> doctorSteps();

}  // namespace dovctl
