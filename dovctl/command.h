// A command: the tables that its command line and its documentation come from, and what it runs.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "common/transport.h"
#include "dovctl/arguments.h"
#include "dovctl/console.h"
#include "dovctl/exit_code.h"
#include "dovctl/screen.h"
#include "dovctl/waiter.h"

namespace dovctl {

class LibraryLog;

// The surroundings of a command: everything that it uses besides its arguments.
struct Session {
    Console& console;
    Waiter& waiter;
    dovcommon::Transport transport;
    // A screen on the program's terminal; null when it has none.
    std::function<std::unique_ptr<Screen>()> openScreen;
    // Of the command that runs: its name and its log.
    std::string command = {};
    LibraryLog* log = nullptr;

    // Reports why the command failed. Returns `code`.
    ExitCode fail(ExitCode code, const std::string& why) const {
        console.fail(command + ": " + why);
        return code;
    }
};

struct Command {
    const char* name = "";
    // One line without a full stop, for the list of commands.
    const char* summary = "";
    // More about it, in lines of at most 80 columns.
    const char* details = nullptr;
    std::vector<Parameter> positionals = {};
    std::vector<Parameter> options = {};
    ExitCode (*run)(Session& session, const Arguments& arguments) = nullptr;
    // Runs even if no service can be reached.
    bool offline = false;
};

// The program's options, and a command's own with those that every command accepts.
std::span<const Parameter> globalOptions();
std::vector<Parameter> optionsOf(const Command& command);

}  // namespace dovctl
