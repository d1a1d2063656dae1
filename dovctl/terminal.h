// The screen on the program's own terminal.
#pragma once

#include <memory>

#include "dovctl/screen.h"

namespace dovctl {

// Null when the standard output is no terminal. The user quits with q or with a signal that asks
// the program to end; Ctrl-Z works. The terminal is as before once the screen is gone, and while
// the program is stopped. One at a time.
std::unique_ptr<Screen> openTerminal();

}  // namespace dovctl
