// Keeps a hold or a registration until Ctrl-C or until the service dies.
#pragma once

#include <cstdint>
#include <functional>

#include "dovctl/command.h"
#include "dovctl/service.h"

namespace dovctl {

// Help text about holds.
inline constexpr char kHoldDetails[] =
        "A handle dies with the service that gave it. What becomes of a hold whose client dies "
        "is the\nservice's decision: the simulator keeps it until it is released or its time runs "
        "out.\n";

struct Kept {
    enum Kind { kHold, kRegistration } kind;
    Waits waits;
    // Returns the handle, -1 for a refusal.
    std::function<int32_t()> take;
    // Returns whether the service still knew the handle.
    std::function<bool(int32_t handle)> giveBack;
    // Called once the handle is taken, before it is announced. May be empty.
    std::function<void()> onTaken = {};
    // Called on a binder thread when the service that gave the handle has died, before the library
    // learns of it. May be empty.
    std::function<void(int32_t handle)> onDied = {};
};

// Takes, and prints the handle of a hold. Returns kDone at once for a hold without --hold; otherwise waits
// for Ctrl-C, gives the handle back and returns. A handle is never given to another life of the
// service: when the service dies, the command ends, or with --reconnect takes again.
ExitCode keep(Session& session, const Arguments& arguments, const Kept& kept);

}  // namespace dovctl
