// dovctl history, power, pm-status, dataset and feature: the queries of the event interface.
#include <functional>
#include <iostream>
#include <optional>
#include <sstream>
#include <stdexcept>

#include <android-base/strings.h>
#include <dov/dov.h>

#include "dovctl/commands/commands.h"
#include "dovctl/commands/parameters.h"
#include "dovctl/output.h"
#include "dovctl/service.h"

namespace dovctl {
namespace {

using DovClient::Resource;

// Captures the library's standard output while it exists: DovGetPMStatus reports an answer that is
// no number nowhere else.
class CaughtOutput {
  public:
    CaughtOutput() : mBefore(std::cout.rdbuf(mText.rdbuf())) {}
    ~CaughtOutput() { std::cout.rdbuf(mBefore); }
    CaughtOutput(const CaughtOutput&) = delete;
    CaughtOutput& operator=(const CaughtOutput&) = delete;

    bool has(const char* part) const { return mText.str().find(part) != std::string::npos; }

  private:
    std::ostringstream mText;
    std::streambuf* const mBefore;
};

constexpr char kNoNumber[] = "the service's answer is no number";
constexpr char kNoInt32[] = "the service's answer does not fit into 32 bits";

// Makes the query, and reports an answer that the library cannot read.
ExitCode ask(const Session& session, const std::function<bool()>& query, const Failure& refusal) {
    const char* problem = nullptr;
    const ExitCode code = callService(
            session,
            [&] {
                const CaughtOutput output;
                try {
                    const bool answered = query();
                    if (output.has("Invalid argument")) problem = kNoNumber;
                    if (output.has("Out of range")) problem = kNoInt32;
                    return answered || problem != nullptr;
                } catch (const std::bad_optional_access&) {
                    problem = "the service's answer has no value";
                } catch (const std::out_of_range&) {
                    problem = kNoInt32;
                } catch (const std::invalid_argument&) {
                    problem = kNoNumber;
                }
                return true;
            },
            Waits::kNever, refusal);
    return code != kDone || problem == nullptr ? code : session.fail(kBadAnswer, problem);
}

Table tableOf(const std::vector<Resource>& resources) {
    Table table{.columns = {"opcode", "value"}, .rows = {}};
    for (const Resource& resource : resources) {
        table.rows.push_back({opcodeText(resource.opcode), resource.value.value_or("")});
    }
    return table;
}

ExitCode runHistory(Session& session, const Arguments& arguments) {
    std::string history;
    const ExitCode code = ask(session, [&] { return DovGetHistory(history) == 0; },
                              {kNothing, "the service has recorded no request"});
    if (code == kNothing && arguments.has(kJson.name)) show(session.console, arguments, Table{});
    if (code != kDone) return code;
    // "start:entry;entry;end"
    std::string_view rest = history;
    android::base::ConsumePrefix(&rest, "start:");
    android::base::ConsumeSuffix(&rest, ";end");
    Table table{.columns = {"request"}, .rows = {}};
    for (const std::string& request : android::base::Split(std::string(rest), ";")) {
        table.rows.push_back({request});
    }
    show(session.console, arguments, table);
    return kDone;
}

ExitCode runDataset(Session& session, const Arguments& arguments) {
    std::vector<Resource> dataset;
    const ExitCode code = ask(session, [&] { return Dov_fetch_dataset(dataset) >= 0; },
                              {kNothing, "the service's data set is empty"});
    if (code == kDone) show(session.console, arguments, tableOf(dataset));
    return code;
}

// A query that is answered with one number. The library returns -1 for no answer too.
ExitCode askNumber(const Session& session, const Arguments& arguments, const std::string& name,
                   const std::function<int32_t()>& query) {
    int32_t number = -1;
    const ExitCode code = ask(session,
                              [&] {
                                  number = query();
                                  return number != -1;
                              },
                              {kNothing, "the service has no answer, or answered -1"});
    if (code == kDone) show(session.console, arguments, name, int64_t{number});
    return code;
}

}  // namespace

const Command kHistory{
        .name = "history",
        .summary = "Print the requests that the service has recorded",
        .options = {kJson},
        .run = runHistory,
};

const Command kPower{
        .name = "power",
        .summary =
                "Print the power consumption, in the service's unit (the simulator's: milliwatts)",
        .options = {kJson},
        .run =
                [](Session& session, const Arguments& arguments) {
                    return askNumber(session, arguments, "power", DovGetPowerConsis);
                },
};

const Command kPmStatus{
        .name = "pm-status",
        .summary = "Print the status of a power mode",
        .positionals = {number("MODE", "a power mode; its meaning is the service's")},
        .options = {kJson},
        .run =
                [](Session& session, const Arguments& arguments) {
                    return askNumber(session, arguments, "status", [&] {
                        return DovGetPMStatus(arguments.get<int32_t>("MODE"));
                    });
                },
};

const Command kDataset{
        .name = "dataset",
        .summary = "Print the service's data set",
        .options = {kJson},
        .run = runDataset,
};

const Command kFeature{
        .name = "feature",
        .summary = "Print the status of a feature",
        .positionals = {number("FEATURE", "a feature; its meaning is the service's")},
        .options = {kJson},
        .run =
                [](Session& session, const Arguments& arguments) {
                    return askNumber(session, arguments, "status", [&] {
                        return DovGetFeatureStatus(arguments.get<int32_t>("FEATURE"));
                    });
                },
};

}  // namespace dovctl
