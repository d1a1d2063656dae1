// Replaces the service manager and death notices, so that the service can be a local object.
//
// A call through the library then ends in a virtual call of the service.
#pragma once

#include <memory>

#include "bench/quiet_service.h"

namespace bench {

// Sets the service that every look-up returns from now on.
void provide(const std::shared_ptr<QuietService>& service);

}  // namespace bench
