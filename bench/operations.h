// Every operation of the library, paired with the bare call of the generated proxy.
#pragma once

#include <list>
#include <memory>
#include <vector>

#include <dov/Resource.h>

#include "bench/contest.h"
#include "bench/quiet_service.h"

namespace bench {

using aidl::vendor::tavro::hardware::mirx::IMirx;

// The numbers of resources in a request.
inline constexpr size_t kCounts[] = {1, 8, 64};

// Makes typical resources: an opcode and a frequency.
std::vector<DovClient::Resource> resources(size_t count);
std::list<DovClient::Resource> resourceList(size_t count);

// Returns a contest for each operation, with two ways that send the same: "bare", a call through
// `hal` with a parcel that was made beforehand, and "library". `hal` must stay bound.
std::vector<Contest> operations(const std::shared_ptr<IMirx>& hal);

}  // namespace bench
