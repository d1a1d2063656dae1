// What every command that acquires does with the handle.
#include "dovctl/commands/holding.h"

#include <string>

#include "dovctl/commands/parameters.h"

namespace dovctl {

ExitCode acquireAndHold(Session& session, const Arguments& arguments, const Command& command,
                        Waits waits, const std::function<int32_t()>& acquire,
                        const std::function<bool(int32_t handle)>& release) {
    int32_t handle = -1;
    const ExitCode code = callService(
            session.console, command.name,
            [&] {
                handle = acquire();
                return handle != -1;
            },
            waits);
    if (code != kDone) return code;
    const bool hold = arguments.has(kHold.name);
    if (hold) session.expectInterrupt();
    session.console.print(std::to_string(handle));
    if (!hold) return kDone;
    session.console.say("holding; Ctrl-C releases");
    session.waitForInterrupt();
    return callService(
            session.console, "release", [&] { return release(handle); }, waits);
}

}  // namespace dovctl
