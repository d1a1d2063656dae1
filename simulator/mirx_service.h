// The simulated resource-control service.
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include <aidl/vendor/tavro/hardware/mirx/BnMirx.h>
#include <android-base/thread_annotations.h>

#include "simulator/history.h"
#include "simulator/holds.h"
#include "simulator/journal.h"
#include "simulator/listeners.h"
#include "simulator/profile.h"
#include "simulator/properties.h"
#include "simulator/timeline.h"

namespace simulator {

using aidl::vendor::tavro::hardware::mirx::BnMirx;
using aidl::vendor::tavro::hardware::mirx::MirxRequestParcel;

// Answers every operation of IMirx and writes each one that it receives to the journal, one line
// each. Binder threads call it in parallel.
//
// The newest hold of a resource determines its value; when it ends, the one before it shows again.
// A request with a callback is completed at once. Properties named feature.N and power_mode.N
// answer the queries for feature and power-mode status N. An event, a scene or a rule sets what the
// profile says, and then what the caller sends along.
class MirxService : public BnMirx {
  public:
    // The journal and the timeline, if there is one, must outlive the object.
    explicit MirxService(Journal& journal, Profile profile = {}, Timeline* timeline = nullptr);

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
    void received(const std::string& line);
    // What the profile has for a request; null for nothing.
    const Profile::Policy* policyOf(const MirxRequestParcel& parcel) const;
    // Adds what a policy sets in front of the hold's own resources: of two settings the later
    // counts.
    static void applyPolicy(const Profile::Policy* policy, Hold& hold);
    void notePolicy(const Profile::Policy* policy);

    // The kinds of request and query (requests.cpp, queries.cpp, dumps.cpp).
    int32_t apply(const MirxRequestParcel& parcel);
    int32_t acquire(const MirxRequestParcel& parcel);
    int32_t noteThermalLevels(const MirxRequestParcel& parcel);
    std::vector<MirxRequestData> answer(const MirxRequestParcel& query) const;
    int32_t diagnose(const MirxRequestParcel& parcel);
    void writeTable(const std::string& title, const std::vector<std::string>& lines);

    Journal& mJournal;
    const Profile mProfile;
    Timeline* const mTimeline;
    History mHistory;
    Properties mProperties;
    std::mutex mThermalMutex;
    std::map<int32_t, std::string> mThermalLevels GUARDED_BY(mThermalMutex);
    Listeners mListeners;
    Holds mHolds;  // last: its thread uses the rest
};

}  // namespace simulator
