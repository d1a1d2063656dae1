// Pages for users, generated from the tables of dovctl's commands.
#pragma once

#include <string>

namespace manual {

// The manual page, in roff.
std::string manPage();

// A bash script that completes commands, options and the values that can be listed.
std::string bashCompletion();

}  // namespace manual
