// The command-line client as an object, so that it can run within a test.
#include "dovctl/dovctl.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include "dovctl/commands/commands.h"
#include "dovctl/help.h"
#include "dovctl/library_log.h"
#include "dovctl/message_size.h"
#include "dovctl/text.h"

namespace dovctl {
namespace {

// The first kCommonOptions are also accepted after the command.
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
    std::vector<Parameter> options = command.options;
    const auto common = globalOptions().first(kCommonOptions);
    options.insert(options.end(), common.begin(), common.end());
    return options;
}

Dovctl::Dovctl(Output out, Output err, Waiter& waiter, dovcommon::Transport transport,
               std::function<std::unique_ptr<Screen>()> openScreen)
    : mConsole(out, err), mSession{mConsole, waiter, std::move(transport), std::move(openScreen)} {}

int Dovctl::run(const std::vector<std::string>& args) {
    const ExitCode code = runCommandLine(args);
    const std::string problem = mConsole.outputProblem();
    if (problem.empty()) return code;
    // A reader that has read enough, like head, is no fault to report.
    if (problem != std::strerror(EPIPE)) mConsole.fail("cannot write the output: " + problem);
    return code == kDone ? kNoOutput : code;
}

ExitCode Dovctl::runCommandLine(const std::vector<std::string>& args) {
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
    if (command == nullptr) {
        return wrongUsage("unknown command '" + rest.front() + "'" +
                          didYouMean(rest.front(), commandNames()));
    }
    rest.erase(rest.begin());
    return runCommand(*command, rest, arguments.has("verbose"));
}

ExitCode Dovctl::runCommand(const Command& command, const std::vector<std::string>& words,
                            bool verbose) {
    const std::vector<Parameter> options = optionsOf(command);
    Arguments arguments;
    std::vector<std::string> rest;
    std::string error = takeOptions(options, Order::kMixed, words, arguments, rest);
    // Help is printed even if the rest is wrong.
    if (arguments.has("help")) {
        mConsole.print(commandHelp(command));
        return kDone;
    }
    if (error.empty()) error = takePositionals(command.positionals, rest, arguments);
    if (error.empty()) error = complete(options, arguments);
    if (!error.empty()) return wrongUsage(error, &command);

    mSession.command = command.name;
    if (!mSession.transport.problem.empty() && !command.offline) {
        return mSession.fail(kNoService,
                             "no service can be reached: " + mSession.transport.problem);
    }
    if (const std::string problem = whyTooLarge(mSession.transport, arguments); !problem.empty()) {
        return mSession.fail(kTooLarge, problem);
    }
    LibraryLog log(mConsole, verbose || arguments.has("verbose"));
    mSession.log = &log;
    const ExitCode code = command.run(mSession, arguments);
    mSession.log = nullptr;
    return code;
}

ExitCode Dovctl::wrongUsage(const std::string& error, const Command* command) {
    const std::string name = command != nullptr ? command->name : "";
    mConsole.fail((name.empty() ? "" : name + ": ") + error +
                  (error.ends_with('?') ? " Try 'dovctl " : "; try 'dovctl ") +
                  (name.empty() ? "" : name + " ") + "--help'");
    return kWrongUsage;
}

}  // namespace dovctl
