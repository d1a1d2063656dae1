// Which process called the service.
#pragma once

#include <cstdint>

#include <aidl/vendor/tavro/hardware/mirx/MirxRequestParcel.h>
#include <android/binder_ibinder.h>

namespace simulator {

// The process id of the caller that the current thread serves. 0 when the transport does not tell
// it: over sockets and for one-way calls.
inline int32_t callingPid() {
    // Outside a call of the driver AIBinder_getCallingPid would answer with this process or abort.
    return AIBinder_isHandlingTransaction() ? AIBinder_getCallingPid() : 0;
}

// The process that sent a request: as the transport tells it, else as the parcel does.
inline int32_t callerOf(const aidl::vendor::tavro::hardware::mirx::MirxRequestParcel& parcel) {
    const int32_t pid = callingPid();
    return pid != 0 ? pid : parcel.pid;
}

}  // namespace simulator
