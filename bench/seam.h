// The platform's service manager and death notices, stood in for: the service is an object of this
// process, and a call through the library is a plain virtual call at its end.
#pragma once

#include <memory>

#include "bench/quiet_service.h"

namespace bench {

// What every look-up finds from now on.
void provide(const std::shared_ptr<QuietService>& service);

}  // namespace bench
