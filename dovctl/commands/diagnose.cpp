// dovctl dump, record and prop: the service's diagnostics and properties.
#include <algorithm>
#include <memory>

#include <dov/halclient.h>

#include "dovctl/commands/commands.h"
#include "dovctl/commands/parameters.h"
#include "dovctl/output.h"
#include "dovctl/service.h"

namespace dovctl {
namespace {

struct Diagnostic {
    const char* name;
    int (*call)();
};

constexpr Diagnostic kDumps[] = {
        {"todo-queue", mirxHalclient::mirxDumpToDoQueue},
        {"run-map", mirxHalclient::mirxDumpRunMap},
        {"active-resources", mirxHalclient::mirxDumpActiveResMap},
        {"requests", mirxHalclient::mirxDumpResRequest},
        {"resources", mirxHalclient::mirxDumpResInfo},
        {"scenes", mirxHalclient::mirxDumpSAInfo},
        {"pid-fds", mirxHalclient::mirxDumpPidFdList},
        {"monitors", mirxHalclient::mirxDumpPidfdMonitorMap},
        {"records", mirxHalclient::mirxDumpResRecordList},
};
constexpr Diagnostic kRecordings[] = {
        {"on", mirxHalclient::mirxHistoryRequestRecordOn},
        {"off", mirxHalclient::mirxHistoryRequestRecordOff},
};

std::vector<std::string> namesOf(std::span<const Diagnostic> table) {
    std::vector<std::string> names;
    for (const Diagnostic& entry : table) names.emplace_back(entry.name);
    return names;
}

ExitCode runDiagnostic(Session& session, const Command& command, std::span<const Diagnostic> table,
                       const std::string& name) {
    const auto diagnostic = std::find_if(table.begin(), table.end(), [&](const Diagnostic& entry) {
        return entry.name == name;
    });
    if (diagnostic == table.end()) {
        std::string names;
        for (const std::string& known : namesOf(table)) names.append(" ").append(known);
        session.console.fail(std::string(command.name) + ": there is no '" + name + "', only" +
                             names);
        return kWrongUsage;
    }
    return callService(
            session.console, command.name, [&] { return diagnostic->call() == 0; },
            Waits::kForService);
}

ExitCode runDump(Session& session, const Arguments& arguments) {
    return runDiagnostic(session, kDump, kDumps, arguments.get<std::string>("TABLE"));
}

ExitCode runRecord(Session& session, const Arguments& arguments) {
    return runDiagnostic(session, kRecord, kRecordings, arguments.get<std::string>("STATE"));
}

ExitCode runProp(Session& session, const Arguments& arguments) {
    const auto what = arguments.get<std::string>("get|set");
    const auto words = arguments.all<std::string>("KEY [VALUE]");
    if (what == "get" && words.size() == 1) {
        std::string value;
        const ExitCode code = callService(
                session.console, kProp.name,
                [&] {
                    const std::unique_ptr<char[]> text(mirxHalclient::mirxPropertyGet(words[0]));
                    value = text.get();
                    return true;
                },
                Waits::kForService);
        if (code == kDone) show(session.console, arguments, words[0], value);
        return code;
    }
    if (what == "set" && words.size() == 2) {
        return callService(
                session.console, kProp.name,
                [&] { return mirxHalclient::mirxPropertySet(words[0], words[1]) != -1; },
                Waits::kForService);
    }
    session.console.fail("prop: write 'get KEY' or 'set KEY VALUE'; try 'dovctl prop --help'");
    return kWrongUsage;
}

constexpr Parameter kDumpPositionals[] = {
        {.name = "TABLE",
         .read = readText,
         .count = Count::kOne,
         .help = "which table",
         .choices = [] { return namesOf(kDumps); }},
};
constexpr Parameter kRecordPositionals[] = {
        {.name = "STATE",
         .read = readText,
         .count = Count::kOne,
         .help = "on or off",
         .choices = [] { return namesOf(kRecordings); }},
};
constexpr Parameter kPropPositionals[] = {
        {.name = "get|set",
         .read = readText,
         .count = Count::kOne,
         .help = "what to do",
         .choices =
                 [] {
                     return std::vector<std::string>{"get", "set"};
                 }},
        {.name = "KEY [VALUE]", .read = readText, .count = Count::kMany, .help = "the property"},
};
constexpr Parameter kPropOptions[] = {kJson};

}  // namespace

constinit const Command kDump{
        .name = "dump",
        .summary = "Have the service write one of its tables to its own log",
        .details =
                "Tables: todo-queue, run-map, active-resources, requests, resources, scenes, "
                "pid-fds,\n"
                "monitors, records.\n",
        .positionals = kDumpPositionals,
        .run = runDump,
};

constinit const Command kRecord{
        .name = "record",
        .summary = "Switch the recording of the request history on or off",
        .positionals = kRecordPositionals,
        .run = runRecord,
};

constinit const Command kProp{
        .name = "prop",
        .summary = "Read or write a property of the service",
        .positionals = kPropPositionals,
        .options = kPropOptions,
        .run = runProp,
};

}  // namespace dovctl
