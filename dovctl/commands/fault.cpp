// dovctl fault: makes the simulator misbehave.
#include <string>

#include <dov/halclient.h>

#include "dovctl/commands/commands.h"
#include "dovctl/service.h"

namespace dovctl {
namespace {

constexpr char kFaults[] = "simulator.fault";

// Adds a fault, or ends all of them if it is empty.
ExitCode change(const Session& session, const std::string& fault) {
    std::string refused;
    const ExitCode code = callService(
            session,
            [&] {
                // Another service would keep the property and behave as before.
                if (propertyOf("simulator.pid").empty()) {
                    refused = "the service is not a simulator";
                } else if (mirxHalclient::mirxPropertySet(kFaults, fault) == -1) {
                    refused = propertyOf("simulator.refused");
                }
                return true;
            },
            Waits::kForService);
    return code != kDone || refused.empty() ? code : session.fail(kRefused, refused);
}

ExitCode print(const Session& session) {
    std::string faults;
    const ExitCode code = readProperty(session, kFaults, faults);
    if (code == kDone) session.console.print(faults.empty() ? "no faults" : faults);
    return code;
}

ExitCode runFault(Session& session, const Arguments& arguments) {
    auto changes = arguments.all<std::string>("FAULT");
    if (arguments.has("clear")) changes.insert(changes.begin(), "");
    if (changes.empty()) return print(session);
    for (const std::string& fault : changes) {
        if (const ExitCode code = change(session, fault); code != kDone) return code;
    }
    return kDone;
}

}  // namespace

const Command kFault{
        .name = "fault",
        .summary = "Make the simulator misbehave",
        .details =
                "WHAT is delay=MS, never, status=STATUS, exception=KIND, answer=N, refuse,\n"
                "reply=SHAPE, callback=HOW or die[=before|after]. WHEN is an operation (request,\n"
                "propertyGet ...), a request kind (event-acquire ...), pid=PID, every=N, times=N\n"
                "or once. 'mirx-simulator --help' explains each.\n",
        .positionals = {{.name = "FAULT",
                         .read = readText,
                         .count = Count::kAny,
                         .help = "WHAT[=HOW][:WHEN[,WHEN...]]; without one the faults in force are "
                                 "printed"}},
        .options = {{.name = "clear", .help = "end all faults; calls that wait go on"}},
        .run = runFault,
};

}  // namespace dovctl
