// The command-line client as an object, so that it can run within a test.
#include "dovctl/dovctl.h"

#include <utility>

#include "dovctl/commands/commands.h"
#include "dovctl/help.h"
#include "dovctl/library_log.h"

namespace dovctl {
namespace {

// The first two are taken behind the command too.
constexpr Parameter kGlobalOptions[] = {
        {.name = "verbose", .letter = 'v', .help = "print the library's log on stderr"},
        {.name = "help", .letter = 'h', .help = "print this text"},
        {.name = "version", .help = "print the program's version"},
};
constexpr size_t kCommonOptions = 2;

}  // namespace

std::span<const Parameter> globalOptions() {
    return kGlobalOptions;
}

std::vector<Parameter> optionsOf(const Command& command) {
    std::vector<Parameter> options(command.options.begin(), command.options.end());
    const auto common = globalOptions().first(kCommonOptions);
    options.insert(options.end(), common.begin(), common.end());
    return options;
}

Dovctl::Dovctl(std::ostream& out, std::ostream& err, std::function<void()> waitForInterrupt,
               std::function<void()> expectInterrupt, dovcommon::Transport transport,
               std::function<std::unique_ptr<Screen>()> openScreen)
    : mConsole(out, err),
      mSession{mConsole, std::move(expectInterrupt), std::move(waitForInterrupt),
               std::move(transport), std::move(openScreen)} {}

int Dovctl::run(const std::vector<std::string>& args) {
    Arguments arguments;
    std::vector<std::string> rest;
    const std::string error =
            takeOptions(globalOptions(), Order::kOptionsFirst, args, arguments, rest);
    if (arguments.has("help")) {
        mConsole.print(programHelp());
        return kDone;
    }
    if (!error.empty()) return wrongUsage(error);
    if (arguments.has("version")) {
        mConsole.print(std::string("dovctl ") + kVersion);
        return kDone;
    }
    if (rest.empty()) {
        mConsole.say(programHelp());
        return kWrongUsage;
    }
    const Command* command = findCommand(rest.front());
    if (command == nullptr) return wrongUsage("unknown command '" + rest.front() + "'");
    rest.erase(rest.begin());
    return runCommand(*command, rest, arguments.has("verbose"));
}

ExitCode Dovctl::runCommand(const Command& command, const std::vector<std::string>& words,
                            bool verbose) {
    const std::vector<Parameter> options = optionsOf(command);
    Arguments arguments;
    std::vector<std::string> rest;
    std::string error = takeOptions(options, Order::kMixed, words, arguments, rest);
    // Whoever asks for help need not have got the rest right.
    if (arguments.has("help")) {
        mConsole.print(commandHelp(command));
        return kDone;
    }
    if (error.empty()) error = takePositionals(command.positionals, rest, arguments);
    if (error.empty()) error = complete(options, arguments);
    if (!error.empty()) return wrongUsage(error, &command);

    if (!mSession.transport.problem.empty() && !command.offline) {
        mConsole.fail(std::string(command.name) +
                      ": no service can be reached: " + mSession.transport.problem);
        return kNoService;
    }
    const LibraryLog log(mConsole, verbose || arguments.has("verbose"));
    return command.run(mSession, arguments);
}

ExitCode Dovctl::wrongUsage(const std::string& error, const Command* command) {
    const std::string name = command != nullptr ? command->name : "";
    mConsole.fail((name.empty() ? "" : name + ": ") + error + "; try 'dovctl " +
                  (name.empty() ? "" : name + " ") + "--help'");
    return kWrongUsage;
}

}  // namespace dovctl
