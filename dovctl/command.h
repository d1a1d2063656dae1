// What a command consists of: the tables that it is parsed and documented from, and what it runs.
#pragma once

#include <functional>
#include <span>
#include <vector>

#include "dovctl/arguments.h"
#include "dovctl/console.h"
#include "dovctl/exit_code.h"

namespace dovctl {

// What a command works with beside its arguments.
struct Session {
    Console& console;
    // A command that waits for Ctrl-C calls the first before it tells anyone that it waits, so that
    // the answer cannot come too early. Until then Ctrl-C ends the program.
    std::function<void()> expectInterrupt;
    std::function<void()> waitForInterrupt;
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
};

// The options in front of the command, and those that every command takes beside its own.
std::span<const Parameter> globalOptions();
std::vector<Parameter> optionsOf(const Command& command);

}  // namespace dovctl
