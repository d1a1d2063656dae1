// dovctl acquire, res-acquire and platform-acquire: acquire, print the handle, and hold.
#include <dov/DovWrapper.h>
#include <dov/dov.h>

#include "dovctl/commands/commands.h"
#include "dovctl/commands/keeping.h"
#include "dovctl/commands/parameters.h"

namespace dovctl {
namespace {

using DovClient::Resource;

constexpr Parameter kPackage{.name = "package",
                             .placeholder = "NAME",
                             .read = readText,
                             .help = "package name of the caller"};
constexpr Parameter kIdentity{.name = "identity",
                              .placeholder = "TEXT",
                              .read = readText,
                              .fallback = "dovctl",
                              .help = "free text that names the caller"};

ExitCode acquireAndKeep(Session& session, const Arguments& arguments,
                        const std::function<int32_t()>& acquire) {
    return keep(session, arguments,
                {.kind = Kept::kHold,
                 .waits = Waits::kNever,
                 .take = acquire,
                 .giveBack = [](int32_t handle) {
                     DovRelease(handle);
                     return true;
                 }});
}

ExitCode runAcquire(Session& session, const Arguments& arguments) {
    const auto event = arguments.get<Event>("EVENT");
    const auto package = arguments.get<std::string>("package");
    const auto identity = arguments.get<std::string>("identity");
    const auto duration = arguments.get<int32_t>("duration");
    const auto resources = arguments.all<Resource>("resource");
    return acquireAndKeep(session, arguments, [&] {
        if (arguments.has("one-way")) {
            return DovEventAcquireOneWay(event.id, package, identity, duration, resources);
        }
        // The call by name takes no resources.
        if (!event.action.empty() && resources.empty()) {
            return DovEventAcquireWrapper("VANTEL_" + event.action, package, identity, duration);
        }
        return DovEventAcquire(event.id, package, identity, duration, resources);
    });
}

ExitCode runResAcquire(Session& session, const Arguments& arguments) {
    return acquireAndKeep(session, arguments, [&] {
        return DovResAcquire(arguments.all<Resource>("resource"), "",
                             arguments.get<std::string>("identity"),
                             arguments.get<int32_t>("duration"));
    });
}

ExitCode runPlatformAcquire(Session& session, const Arguments& arguments) {
    return acquireAndKeep(session, arguments, [&] {
        return DovPlatformResAcquire(
                arguments.all<Resource>("resource"), "", arguments.get<std::string>("identity"),
                arguments.get<std::string>("package"), arguments.get<int32_t>("duration"));
    });
}

}  // namespace

const Command kAcquire{
        .name = "acquire",
        .summary = "Acquire what the service holds for an event, and print the handle",
        .details =
                "With --one-way the handle is drawn here; the service does not answer, so a "
                "refusal is not\nreported. A handle dies with the service that gave it. What "
                "becomes of a hold whose client\ndies is the service's decision: the simulator "
                "keeps it until it is released or its time\nruns out.\n",
        .positionals = {{.name = "EVENT",
                         .read = readEvent,
                         .count = Count::kOne,
                         .help = "an event's number, or an action's name from 'dovctl actions'",
                         .choices = [] { return gActionList; }}},
        .options = {{.name = "one-way", .help = "do not wait for the service to answer"},
                    kPackage,
                    kIdentity,
                    kDuration,
                    resourceOption(Count::kAny),
                    kHold,
                    kReconnect},
        .run = runAcquire,
};

const Command kResAcquire{
        .name = "res-acquire",
        .summary = "Acquire a list of resources, and print the handle",
        .details = kHoldDetails,
        .options = {kIdentity, kDuration, resourceOption(Count::kMany), kHold, kReconnect},
        .run = runResAcquire,
};

const Command kPlatformAcquire{
        .name = "platform-acquire",
        .summary = "Acquire a platform request, and print the handle",
        .details = kHoldDetails,
        .options = {kPackage, kIdentity, kDuration, resourceOption(Count::kMany), kHold,
                    kReconnect},
        .run = runPlatformAcquire,
};

}  // namespace dovctl
