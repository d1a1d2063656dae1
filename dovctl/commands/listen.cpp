// dovctl listen and thermal: print changes as they happen, report thermal levels.
#include <unistd.h>

#include <list>
#include <map>

#include <dov/halclient.h>

#include "dovctl/commands/changes.h"
#include "dovctl/commands/commands.h"
#include "dovctl/commands/keeping.h"
#include "dovctl/commands/parameters.h"

namespace dovctl {
namespace {

using DovClient::Resource;

std::function<bool(int32_t)> isUnregistered(int (*unregister)(int)) {
    return [unregister](int32_t handle) { return unregister(handle) != -1; };
}

ExitCode runListen(Session& session, const Arguments& arguments) {
    const auto changes = std::make_shared<Changes>(session, arguments);
    const auto opcodes = arguments.all<Resource>("opcode");
    const auto paths = arguments.all<PathValue>("path");
    if (opcodes.empty() == paths.empty()) {
        return session.fail(kWrongUsage,
                            "give either --opcode or --path; try 'dovctl listen --help'");
    }
    std::list<Resource> resources(opcodes.begin(), opcodes.end());
    std::vector<std::string> names;
    std::map<std::string, std::string> values;
    for (const auto& [path, value] : paths) {
        names.push_back(path);
        if (value) values[path] = *value;
    }
    const auto listen = [&] {
        if (!opcodes.empty()) {
            return mirxHalclient::mirxResListeningRegister(resources, getpid(), changes);
        }
        if (values.size() == names.size()) {
            return mirxHalclient::mirx_res_listening_register_map_by_path(values, getpid(),
                                                                          changes);
        }
        return mirxHalclient::mirx_res_listening_register_by_path(names, getpid(), changes);
    };
    return keep(session, arguments,
                {.kind = Kept::kRegistration,
                 .waits = Waits::kForService,
                 .take = listen,
                 .giveBack = isUnregistered(mirxHalclient::mirxResListeningUnRegister),
                 // The library forgets a registration only by unregistering it. The handle goes to
                 // the dead service, which the library is still bound to.
                 .onDied = mirxHalclient::mirxResListeningUnRegister});
}

ExitCode runThermal(Session& session, const Arguments& arguments) {
    const auto changes = std::make_shared<Changes>(session, arguments);
    const auto subsystems = arguments.all<int32_t>("listen");
    const auto given = arguments.all<Resource>("ITEM=LEVEL");
    if (subsystems.empty() == given.empty()) {
        return session.fail(kWrongUsage, "give levels or --listen; try 'dovctl thermal --help'");
    }
    if (!given.empty()) {
        std::list<Resource> levels(given.begin(), given.end());
        return callService(
                session, [&] { return mirxHalclient::mirxThermalNotify(levels, getpid()) == 0; },
                Waits::kForService);
    }
    return keep(session, arguments,
                {.kind = Kept::kRegistration,
                 .waits = Waits::kForService,
                 .take =
                         [&] {
                             return mirxHalclient::mirxThermalListeningRegister(subsystems,
                                                                                changes);
                         },
                 .giveBack = isUnregistered(mirxHalclient::mirxThermalListeningUnregister)});
}

constexpr char kDetails[] =
        "Ends with exit code 3 when the service dies, unless --reconnect is given.\n";

}  // namespace

const Command kListen{
        .name = "listen",
        .summary = "Print each change of resources until Ctrl-C",
        .details = kDetails,
        .options = {{.name = "opcode",
                     .placeholder = "OPCODE",
                     .read = readResource,
                     .count = Count::kAny,
                     .help = "a resource to watch"},
                    {.name = "path",
                     .placeholder = "PATH[=VALUE]",
                     .read = readPathValue,
                     .count = Count::kAny,
                     .help = "a resource to watch, by path"},
                    kReconnect,
                    kJson},
        .run = runListen,
};

const Command kThermal{
        .name = "thermal",
        .summary = "Report thermal levels, or print each change of subsystems until Ctrl-C",
        .details = kDetails,
        .positionals = {{.name = "ITEM=LEVEL",
                         .read = readSetting,
                         .count = Count::kAny,
                         .help = "levels to report"}},
        .options = {{.name = "listen",
                     .placeholder = "SUBSYSTEM",
                     .read = readInt32,
                     .count = Count::kAny,
                     .help = "a thermal subsystem to watch"},
                    kReconnect,
                    kJson},
        .run = runThermal,
};

}  // namespace dovctl
