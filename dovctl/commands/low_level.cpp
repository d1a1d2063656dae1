// dovctl res-state, path-state and res-release: the rest of the low-level client.
#include <unistd.h>

#include <list>
#include <map>

#include <dov/halclient.h>

#include "dovctl/commands/commands.h"
#include "dovctl/commands/parameters.h"
#include "dovctl/output.h"
#include "dovctl/service.h"

namespace dovctl {
namespace {

using DovClient::Resource;

ExitCode runResState(Session& session, const Arguments& arguments) {
    const auto given = arguments.all<Resource>("OPCODE");
    std::list<Resource> resources(given.begin(), given.end());
    std::list<Resource> answers;
    const ExitCode code = callService(
            session.console, kResState.name,
            [&] { return mirxHalclient::mirxResStateRequest(resources, getpid(), answers) != -1; },
            Waits::kForService);
    if (code != kDone) return code;
    Table table{.columns = {"opcode", "value"}, .rows = {}};
    for (const auto& [opcode, value] : answers) {
        table.rows.push_back({opcodeText(opcode), value.value_or("")});
    }
    show(session.console, arguments, table);
    return kDone;
}

ExitCode runPathState(Session& session, const Arguments& arguments) {
    std::vector<std::string> paths;
    std::map<std::string, std::string> request;
    for (const auto& [path, value] : arguments.all<PathValue>("PATH")) {
        paths.push_back(path);
        request[path] = value.value_or("");
    }
    Table table{.columns = {"path", "value"}, .rows = {}};
    const ExitCode code = callService(
            session.console, kPathState.name,
            [&] {
                if (arguments.has("map")) {
                    std::map<std::string, std::string> answers;
                    if (mirxHalclient::mirx_res_state_request_map_by_path(request, getpid(),
                                                                          answers) == -1) {
                        return false;
                    }
                    for (const auto& [path, value] : answers) table.rows.push_back({path, value});
                    return true;
                }
                std::vector<std::string> values;
                if (mirxHalclient::mirx_res_state_request_by_path(paths, {}, getpid(), values) ==
                    -1) {
                    return false;
                }
                for (size_t i = 0; i < values.size(); ++i) {
                    table.rows.push_back({i < paths.size() ? paths[i] : "", values[i]});
                }
                return true;
            },
            Waits::kForService);
    if (code == kDone) show(session.console, arguments, table);
    return code;
}

ExitCode runResRelease(Session& session, const Arguments& arguments) {
    for (const int32_t handle : arguments.all<int32_t>("HANDLE")) {
        const auto release = arguments.has("scene") ? mirxHalclient::mirxSACtlRelease
                                                    : mirxHalclient::mirxResCtlRelease;
        const ExitCode code = callService(
                session.console, kResRelease.name, [&] { return release(handle) != -1; },
                Waits::kForService);
        if (code != kDone) return code;
    }
    return kDone;
}

constexpr Parameter kJsonOption[] = {kJson};
constexpr Parameter kResStatePositionals[] = {
        {.name = "OPCODE", .read = readResource, .count = Count::kMany, .help = "which resources"},
};
constexpr Parameter kPathStatePositionals[] = {
        {.name = "PATH", .read = readPathValue, .count = Count::kMany, .help = "which resources"},
};
constexpr Parameter kPathStateOptions[] = {
        {.name = "map", .help = "ask with a map: answers without a value are left out"},
        kJson,
};
constexpr Parameter kReleasePositionals[] = {
        {.name = "HANDLE", .read = readInt32, .count = Count::kMany, .help = "what to give back"},
};
constexpr Parameter kReleaseOptions[] = {
        {.name = "scene", .help = "the handle is one of 'dovctl sa'"},
};

}  // namespace

constinit const Command kResState{
        .name = "res-state",
        .summary = "Print the values of resources, through the low-level client",
        .positionals = kResStatePositionals,
        .options = kJsonOption,
        .run = runResState};

constinit const Command kPathState{.name = "path-state",
                                   .summary = "Print the values of resources by path",
                                   .positionals = kPathStatePositionals,
                                   .options = kPathStateOptions,
                                   .run = runPathState};

constinit const Command kResRelease{
        .name = "res-release",
        .summary = "Give back a handle of res, path or sa, and tell whether it held",
        .positionals = kReleasePositionals,
        .options = kReleaseOptions,
        .run = runResRelease};

}  // namespace dovctl
