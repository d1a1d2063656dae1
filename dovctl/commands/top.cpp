// dovctl top: what is held and which values show, live.
#include <sstream>

#include <android/binder_manager.h>
#include <json/json.h>

#include "common/service.h"
#include "dovctl/commands/commands.h"
#include "dovctl/commands/parameters.h"
#include "dovctl/output.h"
#include "dovctl/within.h"

namespace dovctl {
namespace {

using dovcommon::IMirx;
using dovcommon::kServiceName;
using dovcommon::MirxRequestData;
using dovcommon::MirxRequestParcel;
using std::chrono::milliseconds;

// What the service tells at one moment.
struct State {
    std::string problem = "no answer yet";  // empty: there is an answer
    Json::Value json;  // as for the holds query; without "holds" when the service does not tell
};

// Of what has no such member, null; the text comes from outside.
Json::Value memberOf(const Json::Value& object, const char* member) {
    return object.isObject() ? object[member] : Json::Value();
}

// Asks the service, which may take for ever.
class Source {
  public:
    State ask() {
        const ndk::SpAIBinder binder(AServiceManager_checkService(kServiceName));
        const auto mirx = IMirx::fromBinder(binder);
        if (mirx == nullptr) {
            mTellsHolds = true;  // the next one may
            return {.problem = AServiceManager_isDeclared(kServiceName)
                                       ? "is declared but not running"
                                       : "is not declared",
                    .json = {}};
        }
        State state{.problem = {}, .json = {}};
        if (mTellsHolds) {
            const auto answer = query(*mirx, dovcommon::kHoldsQuery, state);
            const std::string text =
                    answer.empty() ? std::string() : answer.front().value.value_or("");
            std::istringstream stream(text);
            if (Json::parseFromStream(Json::CharReaderBuilder(), stream, &state.json, nullptr) &&
                memberOf(state.json, "holds").isArray()) {
                return state;
            }
            mTellsHolds = !state.problem.empty();
        }
        state.json = Json::objectValue;
        state.json["resources"] = Json::arrayValue;
        for (const MirxRequestData& data : query(*mirx, dovcommon::kDatasetFetch, state)) {
            Json::Value& resource = state.json["resources"].append(Json::objectValue);
            resource["resource"] = opcodeText(data.id);
            resource["value"] = data.value.value_or("");
        }
        return state;
    }

  private:
    static std::vector<MirxRequestData> query(IMirx& mirx, int32_t kind, State& state) {
        MirxRequestParcel parcel;
        parcel.requestType = kind;
        std::vector<MirxRequestData> answer;
        const ndk::ScopedAStatus status = mirx.stateRequest(parcel, &answer);
        if (!status.isOk()) state.problem = "does not answer: " + status.getDescription();
        return answer;
    }

    bool mTellsHolds = true;
};

// A member as text. What others have written must not command the terminal.
std::string textOf(const Json::Value& object, const char* member) {
    const Json::Value value = memberOf(object, member);
    if (value.isNull()) return "-";
    std::string text = value.isConvertibleTo(Json::stringValue) ? value.asString() : "?";
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
    }
    return text;
}

std::string secondsOf(const Json::Value& object, const char* member) {
    const Json::Value value = memberOf(object, member);
    if (!value.isInt64()) return "-";
    std::ostringstream text;
    text.precision(1);
    text << std::fixed << static_cast<double>(value.asInt64()) / 1000 << " s";
    return text.str();
}

Table holdsTable(const Json::Value& holds) {
    Table table{
            .columns = {"holder", "for", "identity", "package", "pid", "held", "left", "resources"},
            .rows = {}};
    for (const Json::Value& hold : holds) {
        table.rows.push_back({textOf(hold, "holder"), textOf(hold, "for"), textOf(hold, "identity"),
                              textOf(hold, "package"), textOf(hold, "pid"),
                              secondsOf(hold, "held_ms"), secondsOf(hold, "left_ms"),
                              textOf(hold, "resources")});
    }
    return table;
}

Table resourcesTable(const Json::Value& resources, bool all) {
    Table table{.columns = {"resource", "name", "value", "idle", "held by"}, .rows = {}};
    for (const Json::Value& resource : resources) {
        if (!all && memberOf(resource, "by").isNull()) continue;
        table.rows.push_back({textOf(resource, "resource"), textOf(resource, "name"),
                              textOf(resource, "value"), textOf(resource, "idle"),
                              textOf(resource, "by")});
    }
    return table;
}

std::vector<std::string> linesOf(const State& state, bool all) {
    if (!state.problem.empty()) return {state.problem};
    std::vector<std::string> lines;
    const auto add = [&](const Table& table) {
        for (std::string& line : dovctl::linesOf(table)) lines.push_back(std::move(line));
    };
    const Json::Value& holds = state.json["holds"];
    if (holds.isNull()) {
        lines.emplace_back("the service does not tell what is held; these are its values:");
        all = true;
    } else if (holds.empty()) {
        lines.emplace_back("nothing is held");
    } else {
        add(holdsTable(holds));
    }
    const Table resources = resourcesTable(state.json["resources"], all);
    if (resources.rows.empty()) return lines;
    lines.emplace_back();
    add(resources);
    return lines;
}

ExitCode printOnce(Session& session, const Arguments& arguments) {
    constexpr milliseconds kPatience{2000};
    auto state = within(kPatience, [] { return Source().ask(); });
    if (!state) state = State{.problem = "does not answer", .json = {}};
    if (!state->problem.empty()) {
        session.console.fail(std::string("top: service ") + kServiceName + " " + state->problem);
        return kNoService;
    }
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
    const auto source = std::make_shared<Source>();
    State state;
    std::future<State> pending;
    do {
        if (!pending.valid()) pending = inBackground([source] { return source->ask(); });
        // A service that hangs must not keep the user from quitting.
        constexpr milliseconds kPatience{300};
        const bool answered = pending.wait_for(kPatience) == std::future_status::ready;
        if (answered) state = pending.get();
        std::vector<std::string> lines = {std::string(kServiceName) +
                                                  (answered ? "" : " does not answer; before:") +
                                                  "   (q quits)",
                                          ""};
        for (std::string& line : linesOf(state, arguments.has("all"))) {
            lines.push_back(std::move(line));
        }
        screen->draw(lines);
    } while (screen->wait(interval) != Screen::Event::kQuit);
    return kDone;
}

constexpr Parameter kOptions[] = {
        timeOption("interval", "1000", "how long to wait before it is drawn again"),
        {.name = "all", .help = "show also the resources that nobody holds"},
        kJson,
};

}  // namespace

constinit const Command kTop{
        .name = "top",
        .summary = "Show what is held and which values show, live",
        .details =
                "q quits. Prints once, and no more, with --json or when its output is no "
                "terminal.\n"
                "The simulator tells what is held; of another service only the values are shown.\n",
        .options = kOptions,
        .run = runTop,
};

}  // namespace dovctl
