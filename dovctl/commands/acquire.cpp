// dovctl acquire, res-acquire and platform-acquire: acquire, print the handle, hold if asked to.
#include <dov/dov.h>

#include "dovctl/commands/commands.h"
#include "dovctl/service.h"

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
constexpr Parameter kDuration{.name = "duration",
                              .placeholder = "N",
                              .read = readInt32,
                              .fallback = "0",
                              .help = "in the service's unit; 0 or less: until released"};
constexpr Parameter kHold{.name = "hold", .help = "keep running, and release on Ctrl-C"};

constexpr Parameter resourceOption(Count count) {
    return {.name = "resource",
            .placeholder = "OPCODE[=VALUE]",
            .read = readResource,
            .count = count,
            .help = "a resource to set; 'OPCODE=' sends an empty value"};
}

// The part that the three have in common. `acquire` gets the resources and returns the handle.
template <typename Acquire>
ExitCode acquireAndHold(Session& session, const Arguments& arguments, const Command& command,
                        Acquire&& acquire) {
    int32_t handle = -1;
    const ExitCode code = callService(session.console, command.name, [&] {
        handle = acquire(arguments.all<Resource>("resource"));
        return handle != -1;
    });
    if (code != kDone) return code;
    const bool hold = arguments.has("hold");
    if (hold) session.expectInterrupt();
    session.console.print(std::to_string(handle));
    if (!hold) return kDone;
    session.console.say("holding; Ctrl-C releases");
    session.waitForInterrupt();
    return callService(session.console, kRelease.name, [&] {
        DovRelease(handle);
        return true;
    });
}

ExitCode runAcquire(Session& session, const Arguments& arguments) {
    const auto function = arguments.has("one-way") ? DovEventAcquireOneWay : DovEventAcquire;
    return acquireAndHold(session, arguments, kAcquire,
                          [&](const std::vector<Resource>& resources) {
                              return function(arguments.get<int32_t>("CMDID"),
                                              arguments.get<std::string>("package"),
                                              arguments.get<std::string>("identity"),
                                              arguments.get<int32_t>("duration"), resources);
                          });
}

ExitCode runResAcquire(Session& session, const Arguments& arguments) {
    return acquireAndHold(
            session, arguments, kResAcquire, [&](const std::vector<Resource>& resources) {
                return DovResAcquire(resources, "", arguments.get<std::string>("identity"),
                                     arguments.get<int32_t>("duration"));
            });
}

ExitCode runPlatformAcquire(Session& session, const Arguments& arguments) {
    return acquireAndHold(
            session, arguments, kPlatformAcquire, [&](const std::vector<Resource>& resources) {
                return DovPlatformResAcquire(resources, "", arguments.get<std::string>("identity"),
                                             arguments.get<std::string>("package"),
                                             arguments.get<int32_t>("duration"));
            });
}

constexpr Parameter kEvent[] = {
        {.name = "CMDID", .read = readInt32, .count = Count::kOne, .help = "the event"},
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
