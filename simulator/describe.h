// Describes requests as text for the journal.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <aidl/vendor/tavro/hardware/mirx/MirxRequestParcel.h>

#include "simulator/text.h"

namespace simulator {

using aidl::vendor::tavro::hardware::mirx::MirxRequestData;
using aidl::vendor::tavro::hardware::mirx::MirxRequestParcel;

// The name of a request kind; "unknown" for any other value.
const char* requestKindName(int32_t requestType);
// The request kind of a name that has hyphens instead of blanks, as in "event-acquire".
std::optional<int32_t> requestKindNamed(const std::string& name);

// A data list as "[{id=0x10 value="7"} …]", fields with their default value are left out.
std::string describe(const std::vector<MirxRequestData>& data);

// A parcel on one line: name and number of its kind, then every field that does not have its
// default value.
std::string describe(const MirxRequestParcel& parcel);

}  // namespace simulator
