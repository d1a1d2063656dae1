// dovctl release: release what earlier commands acquired.
#include <dov/dov.h>
#include <dov/halclient.h>

#include "dovctl/commands/commands.h"
#include "dovctl/service.h"

namespace dovctl {
namespace {

// Returns whether the handle still held anything, as far as the service tells.
bool release(const Arguments& arguments, int32_t handle) {
    if (arguments.has("event")) {
        DovRelease(handle);
        return true;
    }
    const bool scene = arguments.has("scene");
    return (scene ? mirxHalclient::mirxSACtlRelease(handle)
                  : mirxHalclient::mirxResCtlRelease(handle)) != -1;
}

ExitCode runRelease(Session& session, const Arguments& arguments) {
    ExitCode result = kDone;
    for (const int32_t handle : arguments.all<int32_t>("HANDLE")) {
        const ExitCode code = callService(
                session, [&] { return release(arguments, handle); },
                arguments.has("event") ? Waits::kNever : Waits::kForService,
                {kNothing, "handle " + std::to_string(handle) +
                                   " holds nothing: its time ran out, it was released before, or "
                                   "an earlier service gave it"});
        if (code != kDone) result = code;
        if (code == kNoService) break;
    }
    return result;
}

}  // namespace

const Command kRelease{
        .name = "release",
        .summary = "Release what a handle acquired",
        .details =
                "A handle of any command that acquires. Ends with exit code 4 if a handle holds "
                "nothing.\n",
        .positionals = {{.name = "HANDLE",
                         .read = readInt32,
                         .count = Count::kMany,
                         .help = "what to release"}},
        .options = {{.name = "event",
                     .help = "release through the event interface, which does not report the "
                             "answer"},
                    {.name = "scene",
                     .help = "release as a scene request, through mirxSACtlRelease"}},
        .run = runRelease,
};

}  // namespace dovctl
