// The help texts, made from the tables of the commands.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "dovctl/command.h"

namespace dovctl {

inline constexpr char kVersion[] = "1.0.0";

// Of the program: its commands, the options in front of them and the exit codes.
std::string programHelp();
std::string commandHelp(const Command& command);

// What the texts are made of: how something is written, and what it is.
using Rows = std::vector<std::pair<std::string, std::string>>;
std::string usageOf(const Command& command);
Rows argumentRows(const Command& command);
Rows optionRows(std::span<const Parameter> options);

}  // namespace dovctl
