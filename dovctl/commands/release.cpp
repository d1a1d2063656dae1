// dovctl release: give back what earlier commands acquired.
#include <dov/dov.h>

#include "dovctl/commands/commands.h"
#include "dovctl/service.h"

namespace dovctl {
namespace {

ExitCode runRelease(Session& session, const Arguments& arguments) {
    for (const int32_t handle : arguments.all<int32_t>("HANDLE")) {
        // The service does not tell what became of a release.
        const ExitCode code = callService(session.console, kRelease.name, [&] {
            DovRelease(handle);
            return true;
        });
        if (code != kDone) return code;
    }
    return kDone;
}

constexpr Parameter kPositionals[] = {
        {.name = "HANDLE", .read = readInt32, .count = Count::kMany, .help = "what to give back"},
};

}  // namespace

constinit const Command kRelease{
        .name = "release",
        .summary = "Give back what a handle acquired",
        .details = "The service ignores handles that it does not know; nothing is reported.\n",
        .positionals = kPositionals,
        .run = runRelease,
};

}  // namespace dovctl
