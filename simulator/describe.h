// What the service receives, as text for people.
#pragma once

#include <string>
#include <vector>

#include <aidl/vendor/tavro/hardware/mirx/MirxRequestParcel.h>

namespace simulator {

using aidl::vendor::tavro::hardware::mirx::MirxRequestData;
using aidl::vendor::tavro::hardware::mirx::MirxRequestParcel;

// The name of a request kind, "unknown" for a value that is none.
const char* requestKindName(int32_t requestType);

// A data list as "[{id=0x10 value="7"} …]"; fields at their default are left out.
std::string describe(const std::vector<MirxRequestData>& data);

// A parcel on one line: the kind by name and number, then every field that is not at its default.
std::string describe(const MirxRequestParcel& parcel);

// `text` in quotes, with control characters, quotes and backslashes escaped, so that it stays on
// its line.
std::string quoted(const std::string& text);

}  // namespace simulator
