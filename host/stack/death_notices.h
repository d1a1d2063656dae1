// Carries death notices of the socket transport on a thread of their own, as the driver does.
#pragma once

#include <functional>

namespace hostbinder {

// Queues `notice` for the one thread that delivers death notices and returns at once. Notices are
// delivered in the order in which they were posted. Safe to call from any thread, with any lock
// held. When the process exits, the delivery that is under way gets a second to end; later notices
// are dropped.
void postDeathNotice(std::function<void()> notice);

}  // namespace hostbinder
