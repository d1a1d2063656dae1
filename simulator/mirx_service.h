// The simulated resource-control service.
#pragma once

#include <aidl/vendor/tavro/hardware/mirx/BnMirx.h>

#include "simulator/holds.h"
#include "simulator/journal.h"

namespace simulator {

using aidl::vendor::tavro::hardware::mirx::BnMirx;
using aidl::vendor::tavro::hardware::mirx::IMirxCallback;
using aidl::vendor::tavro::hardware::mirx::MirxRequestParcel;

// Answers every operation of IMirx and writes each one that it receives to the journal, one line
// each. Binder threads call it in parallel.
class MirxService : public BnMirx {
  public:
    explicit MirxService(Journal& journal);

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
    // The answer to a request that acquires nothing and was accepted.
    static constexpr int32_t kAccepted = 1;

    int32_t newListeningHandle();

    Journal& mJournal;
    std::mutex mMutex;
    std::map<std::string, std::string> mProperties;
    std::map<int32_t, std::shared_ptr<IMirxCallback>> mListeners;
    int32_t mLastListeningHandle = 0;
    Holds mHolds;  // last: its thread uses the rest
};

}  // namespace simulator
