// dovctl acquire, res-acquire and platform-acquire: acquire, print the handle, hold if asked to.
#include <dov/DovWrapper.h>
#include <dov/dov.h>

#include "dovctl/commands/commands.h"
#include "dovctl/commands/holding.h"
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
                              .help = "free text that says who asks"};

std::vector<std::string> actionNames() {
    return gActionList;
}

ExitCode acquireEvent(Session& session, const Arguments& arguments, const Command& command,
                      const std::function<int32_t()>& acquire) {
    return acquireAndHold(session, arguments, command, Waits::kNever, acquire, [](int32_t handle) {
        DovRelease(handle);
        return true;
    });
}

ExitCode runAcquire(Session& session, const Arguments& arguments) {
    const auto event = arguments.get<Event>("EVENT");
    const auto package = arguments.get<std::string>("package");
    const auto identity = arguments.get<std::string>("identity");
    const auto duration = arguments.get<int32_t>("duration");
    const auto resources = arguments.all<Resource>("resource");
    return acquireEvent(session, arguments, kAcquire, [&] {
        if (arguments.has("one-way")) {
            return DovEventAcquireOneWay(event.id, package, identity, duration, resources);
        }
        // The call by name has no place for resources.
        if (!event.action.empty() && resources.empty()) {
            return DovEventAcquireWrapper("VANTEL_" + event.action, package, identity, duration);
        }
        return DovEventAcquire(event.id, package, identity, duration, resources);
    });
}

ExitCode runResAcquire(Session& session, const Arguments& arguments) {
    return acquireEvent(session, arguments, kResAcquire, [&] {
        return DovResAcquire(arguments.all<Resource>("resource"), "",
                             arguments.get<std::string>("identity"),
                             arguments.get<int32_t>("duration"));
    });
}

ExitCode runPlatformAcquire(Session& session, const Arguments& arguments) {
    return acquireEvent(session, arguments, kPlatformAcquire, [&] {
        return DovPlatformResAcquire(
                arguments.all<Resource>("resource"), "", arguments.get<std::string>("identity"),
                arguments.get<std::string>("package"), arguments.get<int32_t>("duration"));
    });
}

constexpr Parameter kEvent[] = {
        {.name = "EVENT",
         .read = readEvent,
         .count = Count::kOne,
         .help = "the event's number, or an action's name ('dovctl actions' lists them)",
         .choices = actionNames},
};
constexpr Parameter kAcquireOptions[] = {
        {.name = "one-way", .help = "do not wait for the service's work"},
        kPackage,
        kIdentity,
        kDuration,
        resourceOption(Count::kAny),
        kHold,
};
constexpr Parameter kResAcquireOptions[] = {
        kIdentity,
        kDuration,
        resourceOption(Count::kMany),
        kHold,
};
constexpr Parameter kPlatformAcquireOptions[] = {
        kPackage, kIdentity, kDuration, resourceOption(Count::kMany), kHold,
};

}  // namespace

constinit const Command kAcquire{
        .name = "acquire",
        .summary = "Acquire what the service holds for an event, and print the handle",
        .details = "With --one-way the handle is printed even when the request got lost.\n",
        .positionals = kEvent,
        .options = kAcquireOptions,
        .run = runAcquire,
};

constinit const Command kResAcquire{
        .name = "res-acquire",
        .summary = "Acquire a list of resources, and print the handle",
        .options = kResAcquireOptions,
        .run = runResAcquire,
};

constinit const Command kPlatformAcquire{
        .name = "platform-acquire",
        .summary = "Acquire a platform request, and print the handle",
        .options = kPlatformAcquireOptions,
        .run = runPlatformAcquire,
};

}  // namespace dovctl
