// A service that records every call and gives the answers that the test sets.
#pragma once

#include <atomic>
#include <condition_variable>
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
    MirxRequestParcel parcel;
    std::vector<int32_t> numbers;
    std::vector<std::string> texts;
    std::vector<MirxRequestData> data;
    std::shared_ptr<IMirxCallback> callback;
};

class RecordingService : public BnMirx {
  public:
    // The answer of every operation that returns a number.
    std::atomic<int32_t> answer = 1;
    // While set, each answer that is a number is one greater than the previous one.
    std::atomic<bool> counting = false;
    std::vector<MirxRequestData> state;
    std::string property;
    // While set, operations fail with an exception.
    std::atomic<bool> failing = false;
    // Sets a function that every call runs with the operation's name, before it is answered.
    void whenCalled(std::function<void(const std::string&)> hook);

    // Returns and clears the recorded calls, in the order in which they arrived.
    std::vector<RecordedCall> take();
    // Waits for a one-way call to arrive, and returns the next recorded call.
    RecordedCall awaitCall();

    ndk::ScopedAStatus init() override;
    ndk::ScopedAStatus request(const MirxRequestParcel& parcel, int32_t* result) override;
    ndk::ScopedAStatus release(int32_t handle, int32_t* result) override;
    ndk::ScopedAStatus stateRequest(const MirxRequestParcel& parcel,
                                    std::vector<MirxRequestData>* result) override;
    ndk::ScopedAStatus listeningRegister(const MirxRequestParcel& parcel,
                                         const std::shared_ptr<IMirxCallback>& callback,
                                         int32_t* result) override;
    ndk::ScopedAStatus listeningUnregister(int32_t handle, int32_t* result) override;
    ndk::ScopedAStatus propertyGet(const std::string& key, std::string* result) override;
    ndk::ScopedAStatus propertySet(const std::string& key, const std::string& value,
                                   int32_t* result) override;
    ndk::ScopedAStatus thermalListeningRegister(const std::vector<int32_t>& ids,
                                                const std::shared_ptr<IMirxCallback>& callback,
                                                int32_t* result) override;
    ndk::ScopedAStatus thermalListeningUnregister(int32_t handle, int32_t* result) override;
    ndk::ScopedAStatus reservedOperation() override;
    ndk::ScopedAStatus setRelatedSysInfo(int32_t first, int32_t second, int32_t* result) override;
    ndk::ScopedAStatus ruleCtl(int32_t ruleId, int32_t status,
                               const std::vector<MirxRequestData>& resources,
                               int32_t* result) override;
    ndk::ScopedAStatus oneWayRequest(const MirxRequestParcel& parcel) override;

  private:
    ndk::ScopedAStatus record(RecordedCall call);
    ndk::ScopedAStatus record(RecordedCall call, int32_t* result);

    std::mutex mMutex;
    std::condition_variable mRecorded;
    std::vector<RecordedCall> mCalls GUARDED_BY(mMutex);
    std::function<void(const std::string&)> mHook GUARDED_BY(mMutex);
};
