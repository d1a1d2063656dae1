// What a command consists of: the tables that it is parsed and documented from, and what it runs.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "common/transport.h"
#include "dovctl/arguments.h"
#include "dovctl/console.h"
#include "dovctl/exit_code.h"
#include "dovctl/screen.h"

namespace dovctl {

// What a command works with beside its arguments.
struct Session {
    Console& console;
    // A command that waits for Ctrl-C calls the first before it tells anyone that it waits, so that
    // the answer cannot come too early. Until then Ctrl-C ends the program.
    std::function<void()> expectInterrupt;
    std::function<void()> waitForInterrupt;
    dovcommon::Transport transport;
    // A screen on the program's terminal; null when it has none.
    std::function<std::unique_ptr<Screen>()> openScreen;
};

struct Command {
    const char* name = "";
    // One line without a full stop, for the list of commands.
    const char* summary = "";
    // What else there is to know, in lines of at most 80 columns.
    const char* details = nullptr;
    std::span<const Parameter> positionals = {};
    std::span<const Parameter> options = {};
    ExitCode (*run)(Session& session, const Arguments& arguments) = nullptr;
    // Runs also where no service can be reached at all.
    bool offline = false;
};

// The options in front of the command, and those that every command takes beside its own.
std::span<const Parameter> globalOptions();
std::vector<Parameter> optionsOf(const Command& command);

}  // namespace dovctl
