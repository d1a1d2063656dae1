// The service of both bindings.
#pragma once

#include <memory>

#include <aidl/vendor/tavro/hardware/mirx/IMirx.h>

#include "aidl/request_kinds.h"

namespace dovcommon {

using aidl::vendor::tavro::hardware::mirx::IMirx;
using aidl::vendor::tavro::hardware::mirx::MirxRequestData;
using aidl::vendor::tavro::hardware::mirx::MirxRequestParcel;

inline constexpr char kServiceName[] = "vendor.tavro.hardware.mirx.IMirx/default";

}  // namespace dovcommon
