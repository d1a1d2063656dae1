// The help texts, made from the tables of the commands.
#pragma once

#include <string>

#include "dovctl/command.h"

namespace dovctl {

inline constexpr char kVersion[] = "1.0.0";

// Of the program: its commands, the options in front of them and the exit codes.
std::string programHelp();
std::string commandHelp(const Command& command);

}  // namespace dovctl
