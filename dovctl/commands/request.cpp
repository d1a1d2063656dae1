// dovctl res, path and sa: requests through the low-level client.
#include <unistd.h>

#include <list>
#include <semaphore>
#include <vector>

#include <dov/ClientCallback.h>
#include <dov/halclient.h>

#include "dovctl/commands/changes.h"
#include "dovctl/commands/commands.h"
#include "dovctl/commands/holding.h"
#include "dovctl/commands/parameters.h"

namespace dovctl {
namespace {

using DovClient::Resource;

// What the three have in common.
struct Request {
    explicit Request(const Arguments& arguments)
        : handle(arguments.get<int32_t>("handle")),
          duration(arguments.get<int32_t>("duration")),
          arg4(arguments.get<int32_t>("arg4")),
          flag(arguments.get<int32_t>("flag")),
          pid(arguments.has("pid") ? arguments.get<int32_t>("pid") : getpid()) {}

    int32_t handle, duration, arg4, flag, pid;
};

// Acquires and, with --callback, prints what the service says on completion.
ExitCode run(
        Session& session, const Arguments& arguments, const Command& command,
        const std::function<int32_t(const Request&, const std::shared_ptr<Changes>&)>& request) {
    const auto changes = std::make_shared<Changes>(session.console, arguments);
    const bool callback = arguments.has("callback");
    const auto release = command.name == std::string_view(kSa.name)
                                 ? mirxHalclient::mirxSACtlRelease
                                 : mirxHalclient::mirxResCtlRelease;
    return acquireAndHold(
            session, arguments, command, Waits::kForService,
            [&] {
                const int32_t handle = request(Request(arguments), callback ? changes : nullptr);
                if (handle != -1 && callback && !changes->waitForFirst()) {
                    session.console.say("the service has not called back within five seconds");
                }
                return handle;
            },
            [&](int32_t handle) { return release(handle) != -1; });
}

ExitCode runRes(Session& session, const Arguments& arguments) {
    return run(session, arguments, kRes, [&](const Request& r, const auto& changes) {
        const auto given = arguments.all<Resource>("RESOURCE");
        std::list<Resource> resources(given.begin(), given.end());
        if (!changes) {
            return mirxHalclient::mirxResCtlRequest(r.handle, r.duration, resources, r.arg4, r.flag,
                                                    r.pid);
        }
        return mirxHalclient::mirxResCtlRequest(r.handle, r.duration, resources, r.arg4, r.flag,
                                                r.pid, changes);
    });
}

ExitCode runPath(Session& session, const Arguments& arguments) {
    std::vector<std::string> paths;
    std::vector<std::string> values;
    for (const auto& [path, value] : arguments.all<PathValue>("PATH=VALUE")) {
        if (!value) {
            session.console.fail("path: '" + path + "' has no value; write PATH=VALUE");
            return kWrongUsage;
        }
        paths.push_back(path);
        values.push_back(*value);
    }
    return run(session, arguments, kPath, [&](const Request& r, const auto& changes) {
        if (!changes) {
            return mirxHalclient::mirx_resctl_request_by_path(r.handle, r.duration, paths, values,
                                                              r.arg4, r.flag, r.pid);
        }
        return mirxHalclient::mirx_resctl_request_with_callback_by_path(
                r.handle, r.duration, paths, values, r.arg4, r.flag, r.pid, changes);
    });
}

ExitCode runSa(Session& session, const Arguments& arguments) {
    return run(session, arguments, kSa, [&](const Request& r, const auto& changes) {
        const auto scene = arguments.get<int32_t>("SCENE");
        if (!changes) {
            return mirxHalclient::mirxSACtlRequest(r.handle, r.duration, scene, r.arg4, r.flag,
                                                   r.pid);
        }
        return mirxHalclient::mirxSACtlRequest(r.handle, r.duration, scene, r.arg4, r.flag, r.pid,
                                               changes);
    });
}

constexpr Parameter kOptions[] = {
        numberOption("handle", "-1", "request to change; -1: a new one"),
        kDuration,
        numberOption("arg4", "-1", "passed on"),
        numberOption("flag", "-1", "1 or more: true"),
        {.name = "pid",
         .placeholder = "PID",
         .read = readInt32,
         .help = "process that it is made for (default: this one)"},
        {.name = "callback", .help = "wait for the service's completion callback and print it"},
        kJson,
        kHold,
};
constexpr Parameter kResPositionals[] = {
        {.name = "RESOURCE",
         .read = readResource,
         .count = Count::kAny,
         .help = "OPCODE=VALUE: what to set"},
};
constexpr Parameter kPathPositionals[] = {
        {.name = "PATH=VALUE", .read = readPathValue, .count = Count::kAny, .help = "what to set"},
};
constexpr Parameter kSaPositionals[] = {number("SCENE", "which scene or subsystem")};

}  // namespace

constinit const Command kRes{
        .name = "res",
        .summary = "Set resources by opcode, and print the handle",
        .details = "Waits for nothing: a service that is not running is reported.\n",
        .positionals = kResPositionals,
        .options = kOptions,
        .run = runRes,
};

constinit const Command kPath{
        .name = "path",
        .summary = "Set resources by path, and print the handle",
        .positionals = kPathPositionals,
        .options = kOptions,
        .run = runPath,
};

constinit const Command kSa{
        .name = "sa",
        .summary = "Apply the policy of a scene or subsystem, and print the handle",
        .positionals = kSaPositionals,
        .options = kOptions,
        .run = runSa,
};

}  // namespace dovctl
