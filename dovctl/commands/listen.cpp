// dovctl listen and thermal: changes as they happen, and thermal levels.
#include <unistd.h>

#include <list>
#include <map>

#include <dov/halclient.h>

#include "dovctl/commands/changes.h"
#include "dovctl/commands/commands.h"
#include "dovctl/commands/parameters.h"
#include "dovctl/service.h"

namespace dovctl {
namespace {

using DovClient::Resource;

// Registers, prints changes until Ctrl-C, unregisters. `listen` returns the handle, -1 for a
// refusal.
ExitCode listenUntilInterrupt(Session& session, const Command& command,
                              const std::function<int32_t()>& listen,
                              const std::function<int32_t(int32_t)>& unlisten) {
    int32_t handle = -1;
    session.expectInterrupt();
    const ExitCode code = callService(
            session.console, command.name,
            [&] {
                handle = listen();
                return handle != -1;
            },
            Waits::kForService);
    if (code != kDone) return code;
    session.console.say("listening; Ctrl-C ends it");
    session.waitForInterrupt();
    return callService(
            session.console, command.name, [&] { return unlisten(handle) != -1; },
            Waits::kForService);
}

ExitCode runListen(Session& session, const Arguments& arguments) {
    const auto changes = std::make_shared<Changes>(session.console, arguments);
    const auto opcodes = arguments.all<Resource>("opcode");
    const auto paths = arguments.all<PathValue>("path");
    if (opcodes.empty() == paths.empty()) {
        session.console.fail("listen: give either --opcode or --path; try 'dovctl listen --help'");
        return kWrongUsage;
    }
    return listenUntilInterrupt(
            session, kListen,
            [&] {
                if (!opcodes.empty()) {
                    std::list<Resource> resources(opcodes.begin(), opcodes.end());
                    return mirxHalclient::mirxResListeningRegister(resources, getpid(), changes);
                }
                std::vector<std::string> names;
                std::map<std::string, std::string> values;
                for (const auto& [path, value] : paths) {
                    names.push_back(path);
                    if (value) values[path] = *value;
                }
                if (values.size() == names.size()) {
                    return mirxHalclient::mirx_res_listening_register_map_by_path(values, getpid(),
                                                                                  changes);
                }
                return mirxHalclient::mirx_res_listening_register_by_path(names, getpid(), changes);
            },
            mirxHalclient::mirxResListeningUnRegister);
}

ExitCode runThermal(Session& session, const Arguments& arguments) {
    const auto changes = std::make_shared<Changes>(session.console, arguments);
    const auto subsystems = arguments.all<int32_t>("listen");
    const auto given = arguments.all<Resource>("ITEM=LEVEL");
    if (subsystems.empty() == given.empty()) {
        session.console.fail("thermal: give levels or --listen; try 'dovctl thermal --help'");
        return kWrongUsage;
    }
    if (!given.empty()) {
        std::list<Resource> levels(given.begin(), given.end());
        return callService(
                session.console, kThermal.name,
                [&] { return mirxHalclient::mirxThermalNotify(levels, getpid()) == 0; },
                Waits::kForService);
    }
    return listenUntilInterrupt(
            session, kThermal,
            [&] { return mirxHalclient::mirxThermalListeningRegister(subsystems, changes); },
            mirxHalclient::mirxThermalListeningUnregister);
}

constexpr Parameter kListenOptions[] = {
        {.name = "opcode",
         .placeholder = "OPCODE",
         .read = readResource,
         .count = Count::kAny,
         .help = "a resource to watch"},
        {.name = "path",
         .placeholder = "PATH[=VALUE]",
         .read = readPathValue,
         .count = Count::kAny,
         .help = "a resource to watch, by path"},
        kJson,
};
constexpr Parameter kThermalPositionals[] = {
        {.name = "ITEM=LEVEL",
         .read = readResource,
         .count = Count::kAny,
         .help = "levels to report"},
};
constexpr Parameter kThermalOptions[] = {
        {.name = "listen",
         .placeholder = "SUBSYSTEM",
         .read = readInt32,
         .count = Count::kAny,
         .help = "a thermal subsystem to watch"},
        kJson,
};

}  // namespace

constinit const Command kListen{
        .name = "listen",
        .summary = "Print each change of resources until Ctrl-C",
        .options = kListenOptions,
        .run = runListen,
};

constinit const Command kThermal{
        .name = "thermal",
        .summary = "Report thermal levels, or print each change of subsystems until Ctrl-C",
        .positionals = kThermalPositionals,
        .options = kThermalOptions,
        .run = runThermal,
};

}  // namespace dovctl
