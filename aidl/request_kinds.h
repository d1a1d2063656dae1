// The kinds of request, which MirxRequestParcel::requestType carries as plain numbers.
#pragma once

#include <cstdint>

namespace mirx {

enum RequestKind : int32_t {
    kStateQuery = 0x0,
    kResourceControl = 0x1,
    kSceneControl = 0x2,
    kDiagnostics = 0x5,
    kThermalNotification = 0x7,
    kEventAcquire = 0x8,
    kNotification = 0xa,
    kHistoryQuery = 0xb,
    kPlatformControl = 0xc,
    kPowerModeQuery = 0xd,
    kPowerConsumptionQuery = 0xf,
    kDatasetFetch = 0x10,
    kFeatureQuery = 0x11,
};

}  // namespace mirx
