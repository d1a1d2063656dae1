// The operations of the library, each beside the bare call of the generated proxy.
#pragma once

#include <list>
#include <memory>
#include <vector>

#include <dov/Resource.h>

#include "bench/contest.h"
#include "bench/quiet_service.h"

namespace bench {

using aidl::vendor::tavro::hardware::mirx::IMirx;

// How many resources a request has.
inline constexpr size_t kCounts[] = {1, 8, 64};

// Resources as callers have them: an opcode and a frequency.
std::vector<DovClient::Resource> resources(size_t count);
std::list<DovClient::Resource> resourceList(size_t count);

// The ways "bare", a call through `hal` with everything that travels made beforehand, and
// "library". Both send the same. `hal` must stay bound.
std::vector<Contest> operations(const std::shared_ptr<IMirx>& hal);

}  // namespace bench
