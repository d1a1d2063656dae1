// dovctl help: the help text of the program or of a command.
#include "dovctl/help.h"

#include "dovctl/commands/commands.h"

namespace dovctl {

static ExitCode runHelp(Session& session, const Arguments& arguments) {
    const Command* command = findCommand(arguments.get<std::string>("COMMAND"));
    session.console.print(command == nullptr ? programHelp() : commandHelp(*command));
    return kDone;
}

const Command kHelp{
        .name = "help",
        .summary = "Print this help, or the help of a command",
        .positionals = {{.name = "COMMAND",
                         .read = readText,
                         .help = "the command to describe",
                         .choices = commandNames}},
        .run = runHelp,
        .offline = true,
};

}  // namespace dovctl
