// A service that records every call and gives the answers that the test sets.
#include "tests/support/recording_service.h"

#include <chrono>
#include <stdexcept>
#include <utility>

using ndk::ScopedAStatus;

std::vector<RecordedCall> RecordingService::take() {
    std::lock_guard lock(mMutex);
    return std::exchange(mCalls, {});
}

void RecordingService::whenCalled(std::function<void(const std::string&)> hook) {
    std::lock_guard lock(mMutex);
    mHook = std::move(hook);
}

RecordedCall RecordingService::awaitCall() {
    std::unique_lock lock(mMutex);
    const android::base::ScopedLockAssertion locked(mMutex);
    const auto hasCome = [this]() REQUIRES(mMutex) { return !mCalls.empty(); };
    if (!mRecorded.wait_for(lock, std::chrono::seconds(10), hasCome)) {
        throw std::runtime_error("no call arrived within ten seconds");
    }
    RecordedCall call = std::move(mCalls.front());
    mCalls.erase(mCalls.begin());
    return call;
}

ScopedAStatus RecordingService::record(RecordedCall call) {
    const std::string operation = call.operation;
    std::function<void(const std::string&)> hook;
    {
        std::lock_guard lock(mMutex);
        mCalls.push_back(std::move(call));
        hook = mHook;
    }
    mRecorded.notify_all();
    if (hook) hook(operation);
    return failing ? ScopedAStatus::fromExceptionCode(EX_ILLEGAL_STATE) : ScopedAStatus::ok();
}

ScopedAStatus RecordingService::record(RecordedCall call, int32_t* result) {
    *result = counting ? ++answer : answer.load();
    return record(std::move(call));
}

ScopedAStatus RecordingService::init() {
    return record({.operation = "init"});
}

ScopedAStatus RecordingService::request(const MirxRequestParcel& parcel, int32_t* result) {
    return record({.operation = "request", .parcel = parcel}, result);
}

ScopedAStatus RecordingService::release(int32_t handle, int32_t* result) {
    return record({.operation = "release", .numbers = {handle}}, result);
}

ScopedAStatus RecordingService::stateRequest(const MirxRequestParcel& parcel,
                                             std::vector<MirxRequestData>* result) {
    *result = state;
    return record({.operation = "stateRequest", .parcel = parcel});
}

ScopedAStatus RecordingService::listeningRegister(const MirxRequestParcel& parcel,
                                                  const std::shared_ptr<IMirxCallback>& callback,
                                                  int32_t* result) {
    return record({.operation = "listeningRegister", .parcel = parcel, .callback = callback},
                  result);
}

ScopedAStatus RecordingService::listeningUnregister(int32_t handle, int32_t* result) {
    return record({.operation = "listeningUnregister", .numbers = {handle}}, result);
}

ScopedAStatus RecordingService::propertyGet(const std::string& key, std::string* result) {
    *result = property;
    return record({.operation = "propertyGet", .texts = {key}});
}

ScopedAStatus RecordingService::propertySet(const std::string& key, const std::string& value,
                                            int32_t* result) {
    return record({.operation = "propertySet", .texts = {key, value}}, result);
}

ScopedAStatus RecordingService::thermalListeningRegister(
        const std::vector<int32_t>& ids, const std::shared_ptr<IMirxCallback>& callback,
        int32_t* result) {
    return record({.operation = "thermalListeningRegister", .numbers = ids, .callback = callback},
                  result);
}

ScopedAStatus RecordingService::thermalListeningUnregister(int32_t handle, int32_t* result) {
    return record({.operation = "thermalListeningUnregister", .numbers = {handle}}, result);
}

ScopedAStatus RecordingService::reservedOperation() {
    return record({.operation = "reservedOperation"});
}

ScopedAStatus RecordingService::setRelatedSysInfo(int32_t first, int32_t second, int32_t* result) {
    return record({.operation = "setRelatedSysInfo", .numbers = {first, second}}, result);
}

ScopedAStatus RecordingService::ruleCtl(int32_t ruleId, int32_t status,
                                        const std::vector<MirxRequestData>& resources,
                                        int32_t* result) {
    return record({.operation = "ruleCtl", .numbers = {ruleId, status}, .data = resources}, result);
}

ScopedAStatus RecordingService::oneWayRequest(const MirxRequestParcel& parcel) {
    return record({.operation = "oneWayRequest", .parcel = parcel});
}
