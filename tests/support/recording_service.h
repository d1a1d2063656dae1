// A service that records every call and answers as the test says.
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

// One call as the service received it; what an operation does not have keeps its default.
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
    // What the operations answer.
    std::atomic<int32_t> answer = 1;
    // While this is set, each answer that is a number is one more than the one before.
    std::atomic<bool> counting = false;
    std::vector<MirxRequestData> state;
    std::string property;
    // Operations fail with an exception while this is set.
    std::atomic<bool> failing = false;
    // `hook` is called with the operation's name within every call, before it is answered.
    void whenCalled(std::function<void(const std::string&)> hook);

    // The calls since the last take(), in the order in which they came.
    std::vector<RecordedCall> take();
    // Waits until a call that nobody waits for has come: gives the next recorded one.
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
