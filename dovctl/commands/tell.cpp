// dovctl init, notify, scene, rule and sysinfo: initialise the service, and report to the service what happens on the device.
#include <dov/DovWrapper.h>
#include <dov/dov.h>

#include "dovctl/commands/commands.h"
#include "dovctl/commands/parameters.h"
#include "dovctl/service.h"

namespace dovctl {
namespace {

using DovClient::Resource;

ExitCode runNotify(Session& session, const Arguments& arguments) {
    return callService(session, [&] {
        return DovNotify(arguments.get<int32_t>("ID"), arguments.get<int32_t>("ARG"),
                         arguments.all<int32_t>("VALUE")) == 0;
    });
}

ExitCode runScene(Session& session, const Arguments& arguments) {
    return callService(session, [&] {
        // Returns 0 even if the call failed.
        return DovNotifyWapper(arguments.get<std::string>("name"), arguments.get<int32_t>("SCENE"),
                               arguments.get<int32_t>("TYPE"), arguments.get<int32_t>("level"), 0,
                               0, arguments.get<std::string>("data")) == 0;
    });
}

// Prints the answer of a call. -1 is a refusal.
ExitCode printAnswer(Session& session, const std::function<int32_t()>& call) {
    int32_t answer = -1;
    const ExitCode code = callService(session, [&] {
        answer = call();
        return answer != -1;
    });
    if (code == kDone) session.console.print(std::to_string(answer));
    return code;
}

ExitCode runRule(Session& session, const Arguments& arguments) {
    return printAnswer(session, [&] {
        return dovRuleCtl(arguments.get<int32_t>("RULE"), arguments.get<int32_t>("STATUS"),
                          arguments.all<Resource>("resource"));
    });
}

ExitCode runSysinfo(Session& session, const Arguments& arguments) {
    return printAnswer(session, [&] {
        return setRelatedSysInfo(arguments.get<int32_t>("FIRST"), arguments.get<int32_t>("SECOND"));
    });
}

}  // namespace

const Command kInit{
        .name = "init",
        .summary = "Ask the service to initialise",
        .details = "Optional: no other command requires it. Prints nothing.\n",
        .run = [](Session& session,
                  const Arguments&) { return callService(session, [] { return dovInit() == 0; }); },
};

const Command kNotify{
        .name = "notify",
        .summary = "Send a notification",
        .positionals = {number("ID", "the event that is reported"),
                        number("ARG", "a number for the service, sent as it is"),
                        {.name = "VALUE",
                         .read = readInt32,
                         .count = Count::kAny,
                         .help = "only the number of values is sent"}},
        .run = runNotify,
};

const Command kScene{
        .name = "scene",
        .summary = "Report a scene, which the library turns into a rule",
        .details =
                "'dovctl scenes' lists what each scene sends. Any other scene or type sends "
                "nothing, and\nnothing is reported.\n",
        .positionals = {number("SCENE", "a scene of 'dovctl scenes'"),
                        number("TYPE", "0 for off, 1 for on; some scenes have more")},
        .options = {numberOption("level", "0", "strength, for the scenes that have one"),
                    {.name = "data",
                     .placeholder = "TEXT",
                     .read = readText,
                     .help = "description, for the scenes that have one"},
                    {.name = "name",
                     .placeholder = "TEXT",
                     .read = readText,
                     .help = "a name for the library's log"}},
        .run = runScene,
};

const Command kRule{
        .name = "rule",
        .summary = "Switch a rule, and print the answer",
        .positionals = {number("RULE", "the rule's number"),
                        number("STATUS", "the rule's new state; 0 for off")},
        .options = {resourceOption(Count::kAny)},
        .run = runRule,
};

const Command kSysinfo{
        .name = "sysinfo",
        .summary = "Pass two numbers of system information, and print the answer",
        .positionals = {number("FIRST", "the first number"), number("SECOND", "the second number")},
        .run = runSysinfo,
};

}  // namespace dovctl
