// The command-line client as an object, so that it can run within a test.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "dovctl/command.h"

namespace dovctl {

class Dovctl {
  public:
    // The streams must outlive the object. `waitForInterrupt` returns when the user wants a waiting
    // command to end; `expectInterrupt` is called before the command says that it waits.
    // `transport` is the way to the services; `openScreen` gives a screen if there is a terminal.
    Dovctl(
            std::ostream& out, std::ostream& err, std::function<void()> waitForInterrupt,
            std::function<void()> expectInterrupt = [] {}, dovcommon::Transport transport = {},
            std::function<std::unique_ptr<Screen>()> openScreen = [] { return nullptr; });

    // Runs one command line, without the program's name, and returns an ExitCode. Redirects the
    // log of the whole process and uses getopt: for one thread at a time.
    int run(const std::vector<std::string>& args);

  private:
    ExitCode runCommand(const Command& command, const std::vector<std::string>& words,
                        bool verbose);
    ExitCode wrongUsage(const std::string& error, const Command* command = nullptr);

    Console mConsole;
    Session mSession;
};

}  // namespace dovctl
