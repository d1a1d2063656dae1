// Wakes a waiting command when a signal asks the program to end.
#pragma once

#include "dovctl/waiter.h"

namespace dovctl {

// The only waiter of the process. SIGINT, SIGTERM and SIGHUP ask the program to end; the second of
// them ends it at once.
Waiter& signals();

}  // namespace dovctl
