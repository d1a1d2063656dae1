// dovctl doctor: diagnoses why nothing happens.
#include "dovctl/doctor.h"

#include <algorithm>

#include "dovctl/commands/commands.h"
#include "dovctl/commands/parameters.h"
#include "dovctl/output.h"

namespace dovctl {
namespace {

constexpr const char* kStates[] = {"ok", "failed", "not tried"};  // by Finding::State

std::string padded(std::string text, size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

void print(Console& console, const Step& step, const Finding& finding) {
    const std::string line = padded(kStates[finding.state], 11) +
                             (finding.what.empty() ? step.name : padded(step.name, 17)) +
                             finding.what;
    const std::string advice = "           what to do: " + finding.advice;
    console.print(finding.advice.empty() ? line : line + "\n" + advice);
}

ExitCode runDoctor(Session& session, const Arguments& arguments) {
    Patient patient{.transport = session.transport,
                    .patience = std::chrono::milliseconds(arguments.get<int32_t>("timeout")),
                    .log = session.log};
    const bool json = arguments.has(kJson.name);
    Table table{.columns = {"step", "state", "finding", "advice"}, .rows = {}};
    ExitCode code = kDone;
    for (const Step& step : doctorSteps()) {
        const Finding finding =
                code == kDone ? step.examine(patient) : Finding{Finding::kNotTried, "", ""};
        if (finding.state == Finding::kFailed) code = step.failure;
        table.rows.push_back({step.name, kStates[finding.state], finding.what, finding.advice});
        // Printed at once: a later step may have to time out.
        if (!json) print(session.console, step, finding);
    }
    if (json) {
        show(session.console, arguments, table);
    } else if (code == kDone) {
        session.console.print("all is well");
    }
    return code;
}

}  // namespace

const Command kDoctor{
        .name = "doctor",
        .summary = "Find out why nothing happens, step by step",
        .details =
                "Ends with 0 if all is well, with 3 if the service cannot be reached, and with 1 "
                "if it\nmisbehaves. Acquires a request without resources, for a moment.\n",
        .options = {timeOption("timeout", "2000", "how long to wait for each answer"), kJson},
        .run = runDoctor,
        .offline = true,
};

}  // namespace dovctl
