// The screen on the program's own terminal.
#pragma once

#include <memory>

#include "dovctl/screen.h"

namespace dovctl {

// Null if the standard output is no terminal. The user quits with q or with a signal that ends
// programs; Ctrl-Z works. The terminal is restored when the screen is destroyed, and while the
// program is stopped. One at a time.
std::unique_ptr<Screen> openTerminal();

}  // namespace dovctl
