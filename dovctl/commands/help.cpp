// dovctl help: the help text of the program or of a command.
#include "dovctl/help.h"

#include "dovctl/commands/commands.h"

namespace dovctl {
namespace {

ExitCode runHelp(Session& session, const Arguments& arguments) {
    if (!arguments.has("COMMAND")) {
        session.console.print(programHelp());
        return kDone;
    }
    const auto name = arguments.get<std::string>("COMMAND");
    const Command* command = findCommand(name);
    if (command == nullptr) {
        session.console.fail("help: unknown command '" + name + "'; try 'dovctl --help'");
        return kWrongUsage;
    }
    session.console.print(commandHelp(*command));
    return kDone;
}

std::vector<std::string> commandNames() {
    std::vector<std::string> names;
    for (const Command* command : commands()) names.emplace_back(command->name);
    return names;
}

constexpr Parameter kPositionals[] = {
        {.name = "COMMAND",
         .read = readText,
         .help = "the command to explain",
         .choices = commandNames},
};

}  // namespace

constinit const Command kHelp{
        .name = "help",
        .summary = "Print this text, or that of a command",
        .positionals = kPositionals,
        .run = runHelp,
        .offline = true,
};

}  // namespace dovctl
