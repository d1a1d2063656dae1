// How the simulated service handles each kind of request.
#include <optional>
#include <string>
#include <utility>

#include "aidl/request_kinds.h"
#include "simulator/caller.h"
#include "simulator/mirx_service.h"

namespace simulator {

using namespace mirx;

// The answer to a request that acquires nothing and was accepted.
constexpr int32_t kAccepted = 1;

// The id of an event or a scene is in the first element of its request.
static std::optional<int32_t> subjectIn(const MirxRequestParcel& parcel) {
    const bool named = parcel.requestType == kEventAcquire || parcel.requestType == kSceneControl;
    if (!named || parcel.requestData.empty()) return std::nullopt;
    return parcel.requestData.front().id;
}

const Profile::Policy* MirxService::policyOf(const MirxRequestParcel& parcel) const {
    const auto subject = subjectIn(parcel);
    if (!subject) return nullptr;
    return mProfile.find(
            parcel.requestType == kEventAcquire ? Profile::Kind::kEvent : Profile::Kind::kScene,
            *subject);
}

void MirxService::applyPolicy(const Profile::Policy* policy, Hold& hold) {
    if (policy == nullptr) return;
    hold.name = policy->name;
    hold.resources.insert(hold.resources.begin(), policy->resources.begin(),
                          policy->resources.end());
}

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
              .pid = callerOf(parcel),
              .duration = parcel.duration};
    if (const auto subject = subjectIn(parcel)) {
        hold.subject = *subject;
        hold.resources.erase(hold.resources.begin());
        applyPolicy(policyOf(parcel), hold);
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
        std::lock_guard lock(mMutex);
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
