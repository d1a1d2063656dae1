// dovctl state: the values of resources, by opcode or by path.
#include <unistd.h>

#include <algorithm>
#include <list>
#include <map>

#include <dov/dov.h>
#include <dov/halclient.h>

#include "dovctl/commands/commands.h"
#include "dovctl/output.h"
#include "dovctl/service.h"

namespace dovctl {
namespace {

using DovClient::Resource;

// The answer to each resource that was asked for; none if the service gave no value.
using Values = std::vector<std::pair<std::string, std::optional<std::string>>>;

// Each function below fills `values` and returns what the library returned.

int32_t askEventInterface(std::vector<Resource> resources, Values& values) {
    // A value that is sent along would look like an answer.
    for (Resource& resource : resources) resource.value.reset();
    const int32_t answered = DovMutiResStateRequest(resources);
    for (const auto& [opcode, value] : resources) values.emplace_back(opcodeText(opcode), value);
    return answered;
}

int32_t askLowLevel(const std::vector<Resource>& resources, Values& values) {
    std::list<Resource> asked(resources.begin(), resources.end());
    std::list<Resource> answers;
    const int32_t answered = mirxHalclient::mirxResStateRequest(asked, getpid(), answers);
    for (const auto& [opcode, value] : answers) values.emplace_back(opcodeText(opcode), value);
    return answered;
}

int32_t askByPath(const std::vector<PathValue>& resources, Values& values) {
    std::vector<std::string> paths;
    std::vector<std::string> sent;
    for (const auto& [path, value] : resources) {
        paths.push_back(path);
        if (value) sent.push_back(*value);
    }
    std::vector<std::string> answers;
    const int32_t answered =
            mirxHalclient::mirx_res_state_request_by_path(paths, sent, getpid(), answers);
    for (size_t i = 0; i < answers.size(); ++i) {
        values.emplace_back(i < paths.size() ? paths[i] : "", answers[i]);
    }
    return answered;
}

int32_t askByMap(const std::vector<PathValue>& resources, Values& values) {
    std::map<std::string, std::string> asked;
    for (const auto& [path, value] : resources) asked[path] = value.value_or("");
    std::map<std::string, std::string> answers;
    const int32_t answered =
            mirxHalclient::mirx_res_state_request_map_by_path(asked, getpid(), answers);
    for (const auto& [path, sent] : resources) {
        const auto answer = answers.find(path);
        values.emplace_back(path,
                            answer == answers.end() ? std::nullopt : std::optional(answer->second));
    }
    return answered;
}

ExitCode runState(Session& session, const Arguments& arguments) {
    const auto opcodes = arguments.all<Resource>("RESOURCE");
    const auto paths = arguments.all<PathValue>("RESOURCE");
    if (!opcodes.empty() && !paths.empty()) {
        return session.fail(kWrongUsage, "ask for opcodes or for paths, not for both in one call");
    }
    const bool lowLevel = opcodes.empty() || arguments.has("low-level");
    Values values;
    const ExitCode code =
            callService(session,
                        [&] {
                            if (opcodes.empty() && !arguments.has("list"))
                                return askByMap(paths, values) != -1;
                            if (opcodes.empty()) return askByPath(paths, values) != -1;
                            return (lowLevel ? askLowLevel(opcodes, values)
                                             : askEventInterface(opcodes, values)) != -1;
                        },
                        lowLevel ? Waits::kForService : Waits::kNever,
                        {kNothing, "the service has no value for any of the resources"});
    if (code != kDone) return code;

    Table table{.columns = {opcodes.empty() ? "path" : "opcode", "value"}, .rows = {}};
    std::string without;
    for (const auto& [resource, value] : values) {
        if (value) {
            table.rows.push_back({resource, *value});
        } else {
            without.append(without.empty() ? "" : ", ").append(resource);
        }
    }
    if (!without.empty()) session.console.say("no value: " + without);
    show(session.console, arguments, table);
    return table.rows.empty() ? kNothing : kDone;
}

}  // namespace

const Command kState{
        .name = "state",
        .summary = "Print the values of resources",
        .details =
                "Names the resources that have no value. Ends with exit code 4 if none has one.\n",
        .positionals = {{.name = "RESOURCE",
                         .read = readOpcodeOrPath,
                         .count = Count::kMany,
                         .help = "an opcode (a number) or a path"}},
        .options = {{.name = "low-level",
                     .help = "ask for opcodes through the low-level client, as is done for paths"},
                    {.name = "list",
                     .help = "ask for paths with a list, which does not tell an empty value from "
                             "none"},
                    kJson},
        .run = runState,
};

}  // namespace dovctl
