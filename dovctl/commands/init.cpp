// dovctl init: ask the service to initialise.
#include <dov/dov.h>

#include "dovctl/commands/commands.h"
#include "dovctl/service.h"

namespace dovctl {

static ExitCode runInit(Session& session, const Arguments& /*arguments*/) {
    return callService(session.console, kInit.name, [] { return dovInit() == 0; });
}

constinit const Command kInit{
        .name = "init",
        .summary = "Ask the service to initialise",
        .details = "No other command needs it first. Prints nothing.\n",
        .run = runInit,
};

}  // namespace dovctl
