// What the simulated service does with each kind of request.
#include <utility>

#include "aidl/request_kinds.h"
#include "simulator/mirx_service.h"

namespace simulator {

using namespace mirx;

// The answer to a request that acquires nothing and was accepted.
constexpr int32_t kAccepted = 1;

int32_t MirxService::apply(const MirxRequestParcel& parcel) {
    switch (parcel.requestType) {
        case kResourceControl:
        case kSceneControl:
        case kEventAcquire:
        case kPlatformControl: return acquire(parcel);
        case kDiagnostics: return diagnose(parcel);
        case kThermalNotification: return noteThermalLevels(parcel);
        default: return kAccepted;
    }
}

int32_t MirxService::acquire(const MirxRequestParcel& parcel) {
    Hold hold{.holder = {Holder::kRequest, parcel.handle},
              .requestType = parcel.requestType,
              .resources = parcel.requestData,
              .package = parcel.packageName.value_or(""),
              .identity = parcel.identity.value_or(""),
              .pid = parcel.pid,
              .duration = parcel.duration};
    // The first element of an event or a scene request names the event or the scene.
    if (parcel.requestType == kEventAcquire || parcel.requestType == kSceneControl) {
        if (!hold.resources.empty()) {
            hold.subject = hold.resources.front().id;
            hold.resources.erase(hold.resources.begin());
        }
    }
    int32_t handle = parcel.handle;
    if (handle > 0) {
        mHolds.put(std::move(hold));
    } else {
        handle = mHolds.add(std::move(hold));
    }
    if (parcel.callback != nullptr) mListeners.complete(parcel.callback, parcel.requestData);
    return handle;
}

int32_t MirxService::noteThermalLevels(const MirxRequestParcel& parcel) {
    std::vector<MirxRequestData> changed;
    {
        std::lock_guard lock(mThermalMutex);
        for (const MirxRequestData& data : parcel.requestData) {
            std::string& level = mThermalLevels[data.id];
            if (level == data.value.value_or("")) continue;
            level = data.value.value_or("");
            changed.push_back(data);
        }
    }
    if (!changed.empty()) mListeners.notify(Listeners::Topic::kThermal, changed);
    return kAccepted;
}

}  // namespace simulator
