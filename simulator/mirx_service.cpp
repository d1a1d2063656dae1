// The simulated resource-control service.
#include "simulator/mirx_service.h"

#include <algorithm>
#include <array>

#include <android-base/stringprintf.h>

#include "simulator/describe.h"

namespace simulator {

using android::base::StringPrintf;
using ndk::ScopedAStatus;

namespace {

const char* textOf(End end) {
    switch (end) {
        case End::kReleased: return "released";
        case End::kTimedOut: return "time ran out";
        case End::kReplaced: return "replaced under the same handle";
    }
    return "";
}

// Request kinds that hold something until they are released.
bool acquires(int32_t requestType) {
    constexpr std::array<int32_t, 4> kAcquiring = {0x1, 0x2, 0x8, 0xc};
    return std::find(kAcquiring.begin(), kAcquiring.end(), requestType) != kAcquiring.end();
}

Hold holdOf(const MirxRequestParcel& parcel) {
    return {.owner = parcel.identity.value_or(""),
            .data = parcel.requestData,
            .duration = parcel.duration};
}

}  // namespace

MirxService::MirxService(Journal& journal)
    : mJournal(journal), mHolds([&journal](int32_t handle, const Hold&, End end) {
          journal.line(StringPrintf("ended    handle %d: %s", handle, textOf(end)));
      }) {}

ScopedAStatus MirxService::init() {
    mJournal.line("init");
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::request(const MirxRequestParcel& parcel, int32_t* result) {
    if (!acquires(parcel.requestType)) {
        *result = kAccepted;
    } else if (parcel.handle > 0) {
        mHolds.addAs(parcel.handle, holdOf(parcel));
        *result = parcel.handle;
    } else {
        *result = mHolds.add(holdOf(parcel));
    }
    mJournal.line("request  " + describe(parcel) + StringPrintf(" -> %d", *result));
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::oneWayRequest(const MirxRequestParcel& parcel) {
    if (acquires(parcel.requestType)) mHolds.addAs(parcel.handle, holdOf(parcel));
    mJournal.line("one-way  " + describe(parcel));
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::release(int32_t handle, int32_t* result) {
    mJournal.line(StringPrintf("release  handle %d", handle));
    *result = mHolds.release(handle) ? 0 : -1;
    if (*result != 0) mJournal.line(StringPrintf("         handle %d holds nothing", handle));
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::stateRequest(const MirxRequestParcel& parcel,
                                        std::vector<MirxRequestData>* result) {
    *result = parcel.requestData;
    mJournal.line("state    " + describe(parcel) + " -> " + describe(*result));
    return ScopedAStatus::ok();
}

int32_t MirxService::newListeningHandle() {
    return ++mLastListeningHandle;
}

ScopedAStatus MirxService::listeningRegister(const MirxRequestParcel& parcel,
                                             const std::shared_ptr<IMirxCallback>& callback,
                                             int32_t* result) {
    std::lock_guard lock(mMutex);
    *result = newListeningHandle();
    mListeners[*result] = callback;
    mJournal.line("listen   " + describe(parcel) + StringPrintf(" -> %d", *result));
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::listeningUnregister(int32_t handle, int32_t* result) {
    std::lock_guard lock(mMutex);
    *result = mListeners.erase(handle) != 0 ? 0 : -1;
    mJournal.line(StringPrintf("unlisten handle %d -> %d", handle, *result));
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::propertyGet(const std::string& key, std::string* result) {
    std::lock_guard lock(mMutex);
    const auto property = mProperties.find(key);
    if (property != mProperties.end()) *result = property->second;
    mJournal.line("property " + quoted(key) + " -> " + quoted(*result));
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::propertySet(const std::string& key, const std::string& value,
                                       int32_t* result) {
    std::lock_guard lock(mMutex);
    mProperties[key] = value;
    *result = 0;
    mJournal.line("property " + quoted(key) + " = " + quoted(value));
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::thermalListeningRegister(const std::vector<int32_t>& ids,
                                                    const std::shared_ptr<IMirxCallback>& callback,
                                                    int32_t* result) {
    std::lock_guard lock(mMutex);
    *result = newListeningHandle();
    mListeners[*result] = callback;
    mJournal.line(StringPrintf("thermal  listen to %zu subsystems -> %d", ids.size(), *result));
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::thermalListeningUnregister(int32_t handle, int32_t* result) {
    return listeningUnregister(handle, result);
}

ScopedAStatus MirxService::reservedOperation() {
    mJournal.line("reserved operation");
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::setRelatedSysInfo(int32_t first, int32_t second, int32_t* result) {
    mJournal.line(StringPrintf("sysinfo  %d %d", first, second));
    *result = 0;
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::ruleCtl(int32_t ruleId, int32_t status,
                                   const std::vector<MirxRequestData>& resources, int32_t* result) {
    mJournal.line(StringPrintf("rule     %d status=%d data=", ruleId, status) +
                  describe(resources));
    *result = 0;
    return ScopedAStatus::ok();
}

}  // namespace simulator
