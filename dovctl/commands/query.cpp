// dovctl state, history, power, pm-status, dataset and feature: what the event interface can ask.
#include <exception>

#include <dov/dov.h>

#include "dovctl/commands/commands.h"
#include "dovctl/commands/parameters.h"
#include "dovctl/output.h"
#include "dovctl/service.h"

namespace dovctl {
namespace {

using DovClient::Resource;

// Asks, and says so when the answer makes no sense: the library lets the conversion's exception
// out.
ExitCode ask(Session& session, const Command& command, const std::function<bool()>& query) {
    try {
        return callService(session.console, command.name, query);
    } catch (const std::exception& error) {
        session.console.fail(std::string(command.name) +
                             ": the service's answer makes no sense: " + error.what());
        return kRefused;
    }
}

Table tableOf(const std::vector<Resource>& resources) {
    Table table{.columns = {"opcode", "value"}, .rows = {}};
    for (const Resource& resource : resources) {
        table.rows.push_back({opcodeText(resource.opcode), resource.value.value_or("")});
    }
    return table;
}

ExitCode runState(Session& session, const Arguments& arguments) {
    auto resources = arguments.all<Resource>("OPCODE");
    const ExitCode code = ask(session, kState, [&] {
        const size_t asked = resources.size();
        const int32_t answered = DovMutiResStateRequest(resources);
        if (answered >= 0 && static_cast<size_t>(answered) < asked) {
            std::erase_if(resources, [](const Resource& resource) { return !resource.value; });
            session.console.say(std::to_string(asked - resources.size()) +
                                " of the resources have no value");
        }
        return answered >= 0;
    });
    if (code == kDone) show(session.console, arguments, tableOf(resources));
    return code;
}

ExitCode runHistory(Session& session, const Arguments& arguments) {
    std::string history;
    const ExitCode code = ask(session, kHistory, [&] { return DovGetHistory(history) == 0; });
    if (code != kDone) return code;
    // "start:entry;entry;end"
    constexpr std::string_view kStart = "start:";
    constexpr std::string_view kEnd = ";end";
    std::string_view rest = history;
    if (rest.starts_with(kStart)) rest.remove_prefix(kStart.size());
    if (rest.ends_with(kEnd)) rest.remove_suffix(kEnd.size());
    Table table{.columns = {"request"}, .rows = {}};
    for (size_t from = 0; from <= rest.size();) {
        const size_t to = std::min(rest.find(';', from), rest.size());
        table.rows.push_back({std::string(rest.substr(from, to - from))});
        from = to + 1;
    }
    show(session.console, arguments, table);
    return kDone;
}

ExitCode runDataset(Session& session, const Arguments& arguments) {
    std::vector<Resource> dataset;
    const ExitCode code = ask(session, kDataset, [&] { return Dov_fetch_dataset(dataset) >= 0; });
    if (code == kDone) show(session.console, arguments, tableOf(dataset));
    return code;
}

// A query that answers one number, of which -1 means that it failed.
ExitCode askNumber(Session& session, const Arguments& arguments, const Command& command,
                   const std::string& name, const std::function<int32_t()>& query) {
    int32_t number = -1;
    const ExitCode code = ask(session, command, [&] {
        number = query();
        return number != -1;
    });
    if (code == kDone) show(session.console, arguments, name, int64_t{number});
    return code;
}

ExitCode runPower(Session& session, const Arguments& arguments) {
    return askNumber(session, arguments, kPower, "power", DovGetPowerConsis);
}

ExitCode runPmStatus(Session& session, const Arguments& arguments) {
    return askNumber(session, arguments, kPmStatus, "status",
                     [&] { return DovGetPMStatus(arguments.get<int32_t>("MODE")); });
}

ExitCode runFeature(Session& session, const Arguments& arguments) {
    return askNumber(session, arguments, kFeature, "status",
                     [&] { return DovGetFeatureStatus(arguments.get<int32_t>("FEATURE")); });
}

constexpr Parameter kJsonOption[] = {kJson};
constexpr Parameter kStatePositionals[] = {
        {.name = "OPCODE", .read = readResource, .count = Count::kMany, .help = "which resources"},
};
constexpr Parameter kModePositionals[] = {
        number("MODE", "which power mode"),
};
constexpr Parameter kFeaturePositionals[] = {
        number("FEATURE", "which feature"),
};

}  // namespace

constinit const Command kState{.name = "state",
                               .summary = "Print the values of resources",
                               .positionals = kStatePositionals,
                               .options = kJsonOption,
                               .run = runState};

constinit const Command kHistory{.name = "history",
                                 .summary = "Print the requests that the service has recorded",
                                 .options = kJsonOption,
                                 .run = runHistory};

constinit const Command kPower{.name = "power",
                               .summary = "Print the power consumption",
                               .options = kJsonOption,
                               .run = runPower};

constinit const Command kPmStatus{.name = "pm-status",
                                  .summary = "Print the status of a power mode",
                                  .positionals = kModePositionals,
                                  .options = kJsonOption,
                                  .run = runPmStatus};

constinit const Command kDataset{.name = "dataset",
                                 .summary = "Print the service's data set",
                                 .options = kJsonOption,
                                 .run = runDataset};

constinit const Command kFeature{.name = "feature",
                                 .summary = "Print the status of a feature",
                                 .positionals = kFeaturePositionals,
                                 .options = kJsonOption,
                                 .run = runFeature};

}  // namespace dovctl
