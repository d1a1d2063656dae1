// dovctl res, path and sa: requests through the low-level client.
#include <unistd.h>

#include <list>
#include <vector>

#include <dov/ClientCallback.h>
#include <dov/halclient.h>

#include "dovctl/commands/changes.h"
#include "dovctl/commands/commands.h"
#include "dovctl/commands/keeping.h"
#include "dovctl/commands/parameters.h"

namespace dovctl {
namespace {

using DovClient::Resource;

// The options that the three commands share.
struct Request {
    int32_t handle, duration, arg4, flag, pid;
};

// Acquires and, with --callback, prints what the service says on completion.
ExitCode run(
        Session& session, const Arguments& arguments,
        const std::function<int32_t(const Request&, const std::shared_ptr<Changes>&)>& request) {
    const auto changes = std::make_shared<Changes>(session, arguments);
    const auto number = [&](const char* name) { return arguments.get<int32_t>(name); };
    const Request options{number("handle"), number("duration"), number("arg4"), number("flag"),
                          arguments.has("pid") ? number("pid") : getpid()};
    const bool callback = arguments.has("callback");
    const auto release = session.command == kSa.name ? mirxHalclient::mirxSACtlRelease
                                                     : mirxHalclient::mirxResCtlRelease;
    return keep(
            session, arguments,
            {.kind = Kept::kHold,
             .waits = Waits::kForService,
             .take = [&] { return request(options, callback ? changes : nullptr); },
             .giveBack = [&](int32_t handle) { return release(handle) != -1; },
             .onTaken =
                     [&] {
                         if (!callback || changes->waitForFirst()) return;
                         session.console.say("the service has not called back within five seconds");
                     }});
}

ExitCode runRes(Session& session, const Arguments& arguments) {
    const auto given = arguments.all<Resource>("RESOURCE");
    return run(session, arguments, [&](const Request& r, const auto& changes) {
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
        paths.push_back(path);
        values.push_back(value.value_or(""));
    }
    return run(session, arguments, [&](const Request& r, const auto& changes) {
        if (!changes) {
            return mirxHalclient::mirx_resctl_request_by_path(r.handle, r.duration, paths, values,
                                                              r.arg4, r.flag, r.pid);
        }
        return mirxHalclient::mirx_resctl_request_with_callback_by_path(
                r.handle, r.duration, paths, values, r.arg4, r.flag, r.pid, changes);
    });
}

ExitCode runSa(Session& session, const Arguments& arguments) {
    return run(session, arguments, [&](const Request& r, const auto& changes) {
        const auto scene = arguments.get<int32_t>("SCENE");
        if (!changes) {
            return mirxHalclient::mirxSACtlRequest(r.handle, r.duration, scene, r.arg4, r.flag,
                                                   r.pid);
        }
        return mirxHalclient::mirxSACtlRequest(r.handle, r.duration, scene, r.arg4, r.flag, r.pid,
                                               changes);
    });
}

const std::vector<Parameter> kOptions = {
        numberOption("handle", "-1", "the request to change; -1: a new one"),
        kDuration,
        numberOption("arg4", "-1", "a number for the service, sent as it is"),
        numberOption("flag", "-1", "1 or more: true"),
        {.name = "pid",
         .placeholder = "PID",
         .read = readInt32,
         .help = "the process to request for (default: this one)"},
        {.name = "callback", .help = "wait for the completion callback and print it"},
        kJson,
        kHold,
        kReconnect,
};

}  // namespace

const Command kRes{
        .name = "res",
        .summary = "Set resources by opcode, and print the handle",
        .details = kHoldDetails,
        .positionals = {{.name = "RESOURCE",
                         .read = readSetting,
                         .count = Count::kAny,
                         .help = "OPCODE=VALUE: what to set"}},
        .options = kOptions,
        .run = runRes,
};

const Command kPath{
        .name = "path",
        .summary = "Set resources by path, and print the handle",
        .details = kHoldDetails,
        .positionals = {{.name = "PATH=VALUE",
                         .read = readPathSetting,
                         .count = Count::kAny,
                         .help = "what to set"}},
        .options = kOptions,
        .run = runPath,
};

const Command kSa{
        .name = "sa",
        .summary = "Apply the policy of a scene or subsystem, and print the handle",
        .details = kHoldDetails,
        .positionals = {number("SCENE", "which scene or subsystem")},
        .options = kOptions,
        .run = runSa,
};

}  // namespace dovctl
