// A service that records every call and gives the answers that the test sets.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include <aidl/vendor/tavro/hardware/mirx/BnMirx.h>
#include <android-base/thread_annotations.h>

using aidl::vendor::tavro::hardware::mirx::BnMirx;
using aidl::vendor::tavro::hardware::mirx::IMirxCallback;
using aidl::vendor::tavro::hardware::mirx::MirxRequestData;
using aidl::vendor::tavro::hardware::mirx::MirxRequestParcel;

// One received call. Members that the operation does not use keep their defaults.
struct RecordedCall {
    std::string operation;
    std::vector<int32_t> numbers = {};
    std::vector<std::string> texts = {};
    std::vector<MirxRequestData> data = {};
    MirxRequestParcel parcel = {};
    std::shared_ptr<IMirxCallback> callback = nullptr;
};

// The operation and all that differs from the defaults, as in
// "request type 1 duration -1 flag {1010010 '7'} callback".
std::string shown(const RecordedCall& call);

class RecordingService : public BnMirx {
    using Status = ndk::ScopedAStatus;
    using Parcel = MirxRequestParcel;
    using Data = std::vector<MirxRequestData>;
    using Callback = std::shared_ptr<IMirxCallback>;

  public:
    // The answer of every operation that returns a number.
    std::atomic<int32_t> answer = 1;
    // While set, each answer that is a number is one greater than the previous one.
    std::atomic<bool> counting = false;
    Data state;
    std::string property;
    // While set, operations fail with an exception.
    std::atomic<bool> failing = false;
    // Sets a function that every call runs with the operation's name, before it is answered.
    void whenCalled(std::function<void(const std::string&)> hook);

    // Returns and clears the recorded calls, in the order in which they arrived.
    std::vector<RecordedCall> take();
    // Waits for a one-way call to arrive, and returns the next recorded call.
    RecordedCall awaitCall();

    Status init() override { return record({"init"}); }
    Status request(const Parcel& parcel, int32_t* result) override {
        return record({.operation = "request", .parcel = parcel}, result);
    }
    Status release(int32_t handle, int32_t* result) override {
        return record({"release", {handle}}, result);
    }
    Status stateRequest(const Parcel& parcel, Data* result) override {
        *result = state;
        return record({.operation = "stateRequest", .parcel = parcel});
    }
    Status listeningRegister(const Parcel& parcel, const Callback& callback,
                             int32_t* result) override {
        return record({.operation = "listeningRegister", .parcel = parcel, .callback = callback},
                      result);
    }
    Status listeningUnregister(int32_t handle, int32_t* result) override {
        return record({"listeningUnregister", {handle}}, result);
    }
    Status propertyGet(const std::string& key, std::string* result) override {
        *result = property;
        return record({"propertyGet", {}, {key}});
    }
    Status propertySet(const std::string& key, const std::string& value, int32_t* result) override {
        return record({"propertySet", {}, {key, value}}, result);
    }
    Status thermalListeningRegister(const std::vector<int32_t>& ids, const Callback& callback,
                                    int32_t* result) override {
        return record({"thermalListeningRegister", ids, {}, {}, {}, callback}, result);
    }
    Status thermalListeningUnregister(int32_t handle, int32_t* result) override {
        return record({"thermalListeningUnregister", {handle}}, result);
    }
    Status reservedOperation() override { return record({"reservedOperation"}); }
    Status setRelatedSysInfo(int32_t first, int32_t second, int32_t* result) override {
        return record({"setRelatedSysInfo", {first, second}}, result);
    }
    Status ruleCtl(int32_t ruleId, int32_t status, const Data& data, int32_t* result) override {
        return record({"ruleCtl", {ruleId, status}, {}, data}, result);
    }
    Status oneWayRequest(const Parcel& parcel) override {
        return record({.operation = "oneWayRequest", .parcel = parcel});
    }

  private:
    Status record(const RecordedCall& call, int32_t* result = nullptr);

    std::mutex mMutex;
    std::vector<RecordedCall> mCalls GUARDED_BY(mMutex);
    std::function<void(const std::string&)> mHook GUARDED_BY(mMutex);
};
