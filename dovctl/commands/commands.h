// The commands of the program. A new one is declared here and listed in commands.cpp.
#pragma once

#include <span>
#include <string_view>

#include "dovctl/command.h"

namespace dovctl {

extern const Command kInit;
extern const Command kAcquire;
extern const Command kResAcquire;
extern const Command kPlatformAcquire;
extern const Command kRelease;
extern const Command kHelp;

// In the order of the help text.
std::span<const Command* const> commands();

// Null if there is none of that name.
const Command* findCommand(std::string_view name);

}  // namespace dovctl
