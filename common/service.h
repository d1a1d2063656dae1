// The service that both bindings talk to.
#pragma once

#include <memory>

#include <aidl/vendor/tavro/hardware/mirx/IMirx.h>

namespace dovcommon {

using aidl::vendor::tavro::hardware::mirx::IMirx;
using aidl::vendor::tavro::hardware::mirx::MirxRequestData;
using aidl::vendor::tavro::hardware::mirx::MirxRequestParcel;

inline constexpr char kServiceName[] = "vendor.tavro.hardware.mirx.IMirx/default";

// Values of MirxRequestParcel::requestType.
enum RequestKind : int32_t {
    kStateRequest = 0,
    kResourceControl = 1,
    kSceneControl = 2,
    kDiagnostics = 5,
    kThermalNotification = 7,
    kEventAcquire = 8,
    kNotification = 0xa,
    kHistoryQuery = 0xb,
    kPlatformControl = 0xc,
    kPowerModeQuery = 0xd,
    kPowerConsumptionQuery = 0xf,
    kDatasetFetch = 0x10,
    kFeatureQuery = 0x11,
};

}  // namespace dovcommon
