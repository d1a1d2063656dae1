// The help texts, generated from the commands' tables.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "dovctl/command.h"

namespace dovctl {

inline constexpr char kVersion[] = "1.0.0";

// The program's help: its commands, options, exit codes and environment.
std::string programHelp();
std::string commandHelp(const Command& command);

// Pieces of the help, also for the manual page: what the user writes, and what it means.
using Rows = std::vector<std::pair<std::string, std::string>>;
std::string usageOf(const Command& command);
Rows argumentRows(const Command& command);
Rows optionRows(std::span<const Parameter> options);
Rows exitCodeRows();
Rows environmentRows();

}  // namespace dovctl
