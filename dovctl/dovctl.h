// The command-line client as an object, so that it can run within a test.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "dovctl/command.h"

namespace dovctl {

class Dovctl {
  public:
    // The streams and the waiter must outlive the object. `transport` is how the program reaches
    // services; `openScreen` returns a screen if there is a terminal.
    Dovctl(
            Output out, Output err, Waiter& waiter, dovcommon::Transport transport = {},
            std::function<std::unique_ptr<Screen>()> openScreen = [] { return nullptr; });

    // Runs one command line, without the program's name, and returns an ExitCode. Redirects the
    // log of the whole process and uses getopt: for one thread at a time.
    int run(const std::vector<std::string>& args);

  private:
    ExitCode runCommandLine(const std::vector<std::string>& args);
    ExitCode runCommand(const Command& command, const std::vector<std::string>& words,
                        bool verbose);
    ExitCode wrongUsage(const std::string& error, const Command* command = nullptr);

    Console mConsole;
    Session mSession;
};

}  // namespace dovctl
