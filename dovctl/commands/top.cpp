// dovctl top: what is held and the resulting values, live.
#include <sstream>

#include <android-base/stringprintf.h>
#include <json/json.h>

#include "common/service.h"
#include "dovctl/commands/commands.h"
#include "dovctl/commands/parameters.h"
#include "dovctl/output.h"
#include "dovctl/process.h"
#include "dovctl/service.h"
#include "dovctl/within.h"
#include "simulator/holds_query.h"

namespace dovctl {
namespace {

using dovcommon::IMirx;
using dovcommon::kServiceName;
using dovcommon::MirxRequestData;
using dovcommon::MirxRequestParcel;
using std::chrono::milliseconds;

// The service at one moment.
struct State {
    Failure failure{kNoService, "no answer yet"};  // kDone: there is an answer
    Json::Value json;  // as for the holds query; without "holds" if the service does not tell
};

// The member of `object`, which comes from outside; null if it has none.
Json::Value memberOf(const Json::Value& object, const std::string& member) {
    return object.isObject() ? object[member] : Json::Value();
}

// Asks the service, which may never answer.
State ask(const dovcommon::Transport& transport) {
    const ServiceNow before;
    const auto mirx = IMirx::fromBinder(before.binder);
    const pid_t pid = mirx == nullptr ? 0 : serviceProcess(kPatience).pid;
    const auto failed = [&](const ndk::ScopedAStatus& status) {
        // The status of libbinder's sockets for an answer that is too large.
        const bool tooLarge = transport.sockets && status.getStatus() == STATUS_NO_MEMORY;
        return State{.failure = whyFailed(transport, before, pid, tooLarge), .json = {}};
    };
    if (mirx == nullptr) return failed(ndk::ScopedAStatus::ok());
    State state{.failure = {kDone, ""}, .json = {}};
    MirxRequestParcel parcel;
    std::vector<MirxRequestData> answer;
    parcel.requestType = mirx::kHoldsQuery;
    const auto status = mirx->stateRequest(parcel, &answer);
    if (status.getExceptionCode() == EX_TRANSACTION_FAILED) return failed(status);
    std::istringstream text(answer.empty() ? "" : answer.front().value.value_or(""));
    if (Json::parseFromStream(Json::CharReaderBuilder(), text, &state.json, nullptr) &&
        memberOf(state.json, "holds").isArray()) {
        return state;
    }
    // Only the simulator knows the holds query.
    parcel.requestType = mirx::kDatasetFetch;
    answer.clear();
    if (const auto fetched = mirx->stateRequest(parcel, &answer); !fetched.isOk()) {
        return failed(fetched);
    }
    state.json = Json::objectValue;
    state.json["resources"] = Json::arrayValue;
    for (const MirxRequestData& data : answer) {
        Json::Value& resource = state.json["resources"].append(Json::objectValue);
        resource["resource"] = opcodeText(data.id);
        resource["value"] = data.value.value_or("");
    }
    return state;
}

// A column's name and the member that it shows; members in "_ms" are shown in seconds.
using Column = std::pair<const char*, std::string>;

const std::vector<Column> kHoldColumns = {
        {"holder", "holder"},     {"for", "for"},
        {"identity", "identity"}, {"package", "package"},
        {"pid", "pid"},           {"held", "held_ms"},
        {"left", "left_ms"},      {"resources", "resources"},
};
const std::vector<Column> kResourceColumns = {
        {"resource", "resource"}, {"name", "name"},  {"value", "value"},
        {"idle", "idle"},         {"held by", "by"},
};

std::string textOf(const Json::Value& value, bool milliseconds) {
    if (value.isNull()) return "-";
    if (milliseconds) {
        if (!value.isInt64()) return "-";
        return android::base::StringPrintf("%.1f s", static_cast<double>(value.asInt64()) / 1000);
    }
    return value.isConvertibleTo(Json::stringValue) ? value.asString() : "?";
}

Table tableOf(const Json::Value& objects, const std::vector<Column>& columns) {
    Table table;
    for (const auto& [name, member] : columns) table.columns.emplace_back(name);
    for (const Json::Value& object : objects) {
        std::vector<Cell>& row = table.rows.emplace_back();
        for (const auto& [name, member] : columns) {
            row.emplace_back(textOf(memberOf(object, member), member.ends_with("_ms")));
        }
    }
    return table;
}

std::vector<std::string> linesOf(const State& state, bool all) {
    if (state.failure.code != kDone) return {state.failure.why};
    std::vector<std::string> lines;
    const auto add = [&](const Table& table) {
        for (std::string& line : dovctl::linesOf(table)) lines.push_back(std::move(line));
    };
    const Json::Value& holds = state.json["holds"];
    if (holds.isNull()) {
        lines.emplace_back("the service does not tell what is held; its values:");
        all = true;
    } else if (holds.empty()) {
        lines.emplace_back("nothing is held");
    } else {
        add(tableOf(holds, kHoldColumns));
    }
    Json::Value shown(Json::arrayValue);
    for (const Json::Value& resource : state.json["resources"]) {
        if (all || !memberOf(resource, "by").isNull()) shown.append(resource);
    }
    if (shown.empty()) return lines;
    lines.emplace_back();
    add(tableOf(shown, kResourceColumns));
    return lines;
}

ExitCode printOnce(Session& session, const Arguments& arguments) {
    const auto state =
            within(kPatience, [transport = session.transport] { return ask(transport); });
    if (!state) return session.fail(kNoService, "the service does not answer");
    const auto& [code, why] = state->failure;
    if (code != kDone) return session.fail(code, why);
    if (arguments.has(kJson.name)) {
        session.console.print(written(state->json));
        return kDone;
    }
    for (const std::string& line : linesOf(*state, arguments.has("all"))) {
        session.console.print(line);
    }
    return kDone;
}

ExitCode runTop(Session& session, const Arguments& arguments) {
    const auto screen = arguments.has(kJson.name) ? nullptr : session.openScreen();
    if (screen == nullptr) return printOnce(session, arguments);

    const milliseconds interval(arguments.get<int32_t>("interval"));
    State state;
    std::future<State> pending;
    do {
        if (!pending.valid())
            pending = inBackground([transport = session.transport] { return ask(transport); });
        // A service that hangs must not keep the user from quitting.
        constexpr milliseconds kBeforeDrawing{300};
        const bool answered = pending.wait_for(kBeforeDrawing) == std::future_status::ready;
        if (answered) state = pending.get();
        std::vector<std::string> lines = {
                std::string(kServiceName) + (answered ? "" : " does not answer; its last answer:") +
                        "   (q quits)",
                ""};
        for (std::string& line : linesOf(state, arguments.has("all"))) {
            lines.push_back(std::move(line));
        }
        screen->draw(lines);
    } while (screen->wait(interval) != Screen::Event::kQuit);
    return kDone;
}

}  // namespace

const Command kTop{
        .name = "top",
        .summary = "Show what is held and the resulting values, live",
        .details =
                "q quits. Prints once with --json or if the output is no terminal. Only the "
                "simulator tells\nwhat is held; of another service the values are shown.\n",
        .options = {timeOption("interval", "1000", "the time between two looks"),
                    {.name = "all", .help = "also show the resources that nobody holds"},
                    kJson},
        .run = runTop,
};

}  // namespace dovctl
