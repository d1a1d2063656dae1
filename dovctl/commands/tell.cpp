// dovctl notify, scene, rule and sysinfo: tell the service what goes on.
#include <dov/DovWrapper.h>
#include <dov/dov.h>

#include "dovctl/commands/commands.h"
#include "dovctl/commands/parameters.h"
#include "dovctl/service.h"

namespace dovctl {
namespace {

using DovClient::Resource;

ExitCode runNotify(Session& session, const Arguments& arguments) {
    return callService(session.console, kNotify.name, [&] {
        return DovNotify(arguments.get<int32_t>("ID"), arguments.get<int32_t>("ARG"),
                         arguments.all<int32_t>("VALUE")) == 0;
    });
}

ExitCode runScene(Session& session, const Arguments& arguments) {
    return callService(session.console, kScene.name, [&] {
        // Answers 0 whatever becomes of it.
        return DovNotifyWapper(arguments.get<std::string>("name"), arguments.get<int32_t>("SCENE"),
                               arguments.get<int32_t>("TYPE"), arguments.get<int32_t>("level"), 0,
                               0, arguments.get<std::string>("data")) == 0;
    });
}

// Prints the answer of a call, of which -1 means that it failed.
ExitCode printAnswer(Session& session, const Command& command,
                     const std::function<int32_t()>& call) {
    int32_t answer = -1;
    const ExitCode code = callService(session.console, command.name, [&] {
        answer = call();
        return answer != -1;
    });
    if (code == kDone) session.console.print(std::to_string(answer));
    return code;
}

ExitCode runRule(Session& session, const Arguments& arguments) {
    return printAnswer(session, kRule, [&] {
        return dovRuleCtl(arguments.get<int32_t>("RULE"), arguments.get<int32_t>("STATUS"),
                          arguments.all<Resource>("resource"));
    });
}

ExitCode runSysinfo(Session& session, const Arguments& arguments) {
    return printAnswer(session, kSysinfo, [&] {
        return setRelatedSysInfo(arguments.get<int32_t>("FIRST"), arguments.get<int32_t>("SECOND"));
    });
}

constexpr Parameter kNotifyPositionals[] = {
        number("ID", "what the notification is about"),
        number("ARG", "a number that goes with it"),
        {.name = "VALUE",
         .read = readInt32,
         .count = Count::kAny,
         .help = "only their count arrives"},
};
constexpr Parameter kScenePositionals[] = {number("SCENE", "which scene"),
                                           number("TYPE", "0 for off, 1 for on")};
constexpr Parameter kSceneOptions[] = {
        numberOption("level", "0", "strength"),
        {.name = "data",
         .placeholder = "TEXT",
         .read = readText,
         .help = "description of the scene"},
        {.name = "name", .placeholder = "TEXT", .read = readText, .help = "for the log"},
};
constexpr Parameter kRulePositionals[] = {number("RULE", "which rule"),
                                          number("STATUS", "its new state, 0 for off")};
constexpr Parameter kRuleOptions[] = {resourceOption(Count::kAny)};
constexpr Parameter kSysinfoPositionals[] = {number("FIRST", "first number"),
                                             number("SECOND", "second number")};

}  // namespace

constinit const Command kNotify{
        .name = "notify",
        .summary = "Send a notification",
        .positionals = kNotifyPositionals,
        .run = runNotify,
};

constinit const Command kScene{
        .name = "scene",
        .summary = "Tell about a scene, which the library turns into a rule",
        .details =
                "A scene or type that the library does not know sends nothing; nothing is "
                "reported.\n",
        .positionals = kScenePositionals,
        .options = kSceneOptions,
        .run = runScene,
};

constinit const Command kRule{
        .name = "rule",
        .summary = "Switch a rule, and print the answer",
        .positionals = kRulePositionals,
        .options = kRuleOptions,
        .run = runRule,
};

constinit const Command kSysinfo{
        .name = "sysinfo",
        .summary = "Pass two numbers of system information, and print the answer",
        .positionals = kSysinfoPositionals,
        .run = runSysinfo,
};

}  // namespace dovctl
