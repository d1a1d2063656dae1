// What is generated from the tables of dovctl's commands for those who use it.
#pragma once

#include <string>

namespace manual {

// The manual page, for man.
std::string manPage();

// A script for bash that completes commands, options and the values that can be listed.
std::string bashCompletion();

}  // namespace manual
