// What every command that acquires does with the handle.
#pragma once

#include <cstdint>
#include <functional>

#include "dovctl/command.h"
#include "dovctl/service.h"

namespace dovctl {

// Acquires, prints the handle and, with --hold, waits for Ctrl-C and releases. `acquire` returns
// the handle, -1 for a refusal; `release` gives it back and returns whether that worked.
ExitCode acquireAndHold(Session& session, const Arguments& arguments, const Command& command,
                        Waits waits, const std::function<int32_t()>& acquire,
                        const std::function<bool(int32_t handle)>& release);

}  // namespace dovctl
