// Whether the service is there, and what to say when a call of it failed.
#pragma once

#include <functional>

#include "dovctl/console.h"
#include "dovctl/exit_code.h"

namespace dovctl {

// Whether a call of the library waits for a service that is declared but not running.
enum class Waits { kNever, kForService };

// Makes `call`, unless it would have to wait for the service. `call` returns whether the service
// did what it was asked.
//
// Returns kDone, or kRefused or kNoService after having said why; `what` names the call.
ExitCode callService(Console& console, const char* what, const std::function<bool()>& call,
                     Waits waits = Waits::kNever);

}  // namespace dovctl
