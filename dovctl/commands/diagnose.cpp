// dovctl dump, record and prop: the service's diagnostics and properties.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>

#include <android/binder_manager.h>
#include <dov/halclient.h>

#include "common/service.h"
#include "dovctl/commands/commands.h"
#include "dovctl/output.h"
#include "dovctl/service.h"

namespace dovctl {
namespace {

struct Diagnostic {
    const char* name;
    int (*call)();  // null: dump() as dumpsys calls it
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
        {"service", nullptr},
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

// Puts into `text` what the service writes for dump(). Returns whether it could.
bool dumpService(std::string& text) {
    // A file and not a pipe: the service writes all of it before the call returns.
    const ndk::ScopedFileDescriptor file(memfd_create("dump", MFD_CLOEXEC));
    const ndk::SpAIBinder service(AServiceManager_checkService(dovcommon::kServiceName));
    if (service.get() == nullptr || file.get() < 0 ||
        AIBinder_dump(service.get(), file.get(), nullptr, 0) != STATUS_OK) {
        return false;
    }
    const off_t size = lseek(file.get(), 0, SEEK_END);
    text.resize(static_cast<size_t>(std::max<off_t>(size, 0)));
    return pread(file.get(), text.data(), text.size(), 0) == size;
}

// Makes the call of `table` with this name, which the command line has checked.
ExitCode runDiagnostic(const Session& session, std::span<const Diagnostic> table,
                       const std::string& name) {
    const Diagnostic& diagnostic =
            *std::find_if(table.begin(), table.end(),
                          [&](const Diagnostic& entry) { return entry.name == name; });
    const bool here = diagnostic.call == nullptr;
    std::string text;
    const ExitCode code = callService(
            session, [&] { return here ? dumpService(text) : diagnostic.call() == 0; },
            Waits::kForService);
    if (code == kDone && here) {
        session.console.print(text.empty() ? "the service dumps nothing" : text);
    }
    return code;
}

ExitCode getProperty(const Session& session, const Arguments& arguments, const std::string& key) {
    std::string value;
    const ExitCode code = readProperty(session, key, value);
    if (code != kDone) return code;
    if (value.size() > kLongestProperty) {
        return session.fail(kBadAnswer, "the value of '" + key + "' has " +
                                                std::to_string(value.size()) + " characters, " +
                                                std::to_string(kLongestProperty) +
                                                " are allowed: a program that asks the library "
                                                "for it aborts");
    }
    show(session.console, arguments, key, value);
    return kDone;
}

ExitCode runProp(Session& session, const Arguments& arguments) {
    const auto what = arguments.get<std::string>("get|set");
    const auto words = arguments.all<std::string>("KEY [VALUE]");
    if (what == "get" && words.size() == 1) return getProperty(session, arguments, words[0]);
    if (what == "set" && words.size() == 2) {
        return callService(
                session, [&] { return mirxHalclient::mirxPropertySet(words[0], words[1]) != -1; },
                Waits::kForService);
    }
    return session.fail(kWrongUsage,
                        "write 'get KEY' or 'set KEY VALUE'; try 'dovctl prop --help'");
}

}  // namespace

const Command kDump{
        .name = "dump",
        .summary = "Make the service write one of its tables to its own log",
        .details =
                "Tables: todo-queue, run-map, active-resources, requests, resources, scenes, "
                "pid-fds,\n"
                "monitors, records.\n"
                "With 'service' it prints here what 'dumpsys' would show of the service.\n",
        .positionals = {{.name = "TABLE",
                         .read = readText,
                         .count = Count::kOne,
                         .help = "the table to write",
                         .choices = [] { return namesOf(kDumps); }}},
        .run =
                [](Session& session, const Arguments& arguments) {
                    return runDiagnostic(session, kDumps, arguments.get<std::string>("TABLE"));
                },
};

const Command kRecord{
        .name = "record",
        .summary = "Switch the recording of the request history on or off",
        .positionals = {{.name = "STATE",
                         .read = readText,
                         .count = Count::kOne,
                         .help = "on or off",
                         .choices = [] { return namesOf(kRecordings); }}},
        .run =
                [](Session& session, const Arguments& arguments) {
                    return runDiagnostic(session, kRecordings, arguments.get<std::string>("STATE"));
                },
};

const Command kProp{
        .name = "prop",
        .summary = "Read or write a property of the service",
        .positionals = {{.name = "get|set",
                         .read = readText,
                         .count = Count::kOne,
                         .help = "what to do",
                         .choices =
                                 [] {
                                     return std::vector<std::string>{"get", "set"};
                                 }},
                        {.name = "KEY [VALUE]",
                         .read = readText,
                         .count = Count::kMany,
                         .help = "the property"}},
        .options = {kJson},
        .run = runProp,
};

}  // namespace dovctl
