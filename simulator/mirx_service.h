// The simulated resource-control service.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <aidl/vendor/tavro/hardware/mirx/BnMirx.h>
#include <android-base/thread_annotations.h>

#include "simulator/faults.h"
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

// Answers every operation of IMirx and writes each call to the journal. Binder threads call it in
// parallel.
//
// The newest hold of a resource determines its value; when it ends, the hold before it does. Holds
// outlive the client that acquired them. A request with a callback is completed at once. Properties
// named feature.N and power_mode.N answer the queries for feature and power-mode status N. An
// event, a scene or a rule sets what the profile says, then what the caller sends along.
//
// Faults can prevent or change a call. Properties whose names begin with "simulator." control the
// simulator; they are exempt from faults:
//
//   simulator.fault     write: adds a fault, or ends all if empty; read: the faults, line by line
//   simulator.refused   read: why the last fault was refused
//   simulator.pid       read: the process that serves
//   simulator.replaced  write: the process that serves in its place from now on
class MirxService : public BnMirx {
  public:
    using OnReplaced = std::function<void(const std::string& pid)>;

    // The journal and the timeline, if there is one, must outlive the object.
    explicit MirxService(
            Journal& journal, Profile profile = {}, Timeline* timeline = nullptr,
            std::shared_ptr<Faults> faults = std::make_shared<Faults>(),
            OnReplaced onReplaced = [](const std::string&) {});

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
    // Writes the process, the faults, the number of calls, what is held, the values, the listeners,
    // the history, the properties and the profile.
    binder_status_t dump(int fd, const char** args, uint32_t numArgs) override;

  private:
    // Faults and controls (controls.cpp).

    // Counts the call, and does `work` unless a fault prevents it.
    ndk::ScopedAStatus serve(const Call& call,
                             const std::function<void(const Misbehaviour&)>& work);
    // The same for an operation that returns a number. A fault may replace the number and the work.
    ndk::ScopedAStatus serve(const Call& call, int32_t* result,
                             const std::function<int32_t(const Misbehaviour&)>& work);
    // Copies a request. Faults apply to the copy's callback.
    MirxRequestParcel withFaults(const MirxRequestParcel& parcel, const Call& call,
                                 const Misbehaviour& fault);
    std::shared_ptr<IMirxCallback> withFaults(const std::shared_ptr<IMirxCallback>& callback,
                                              const Call& call);
    std::string control(const std::string& key) const;
    int32_t setControl(const std::string& key, const std::string& value);

    struct Table {
        const char* title;
        std::vector<std::string> lines;
    };
    // The tables that diagnostics and dump() show, by diagnostic code (dumps.cpp).
    std::optional<Table> table(int32_t code) const;
    // Called for every step of the table of holds.
    void observe(const Step& step);
    void received(const std::string& line);
    // The profile's policy for a request; null if there is none.
    const Profile::Policy* policyOf(const MirxRequestParcel& parcel) const;
    // Inserts the policy's settings before the hold's own: of two settings of a resource the later
    // counts.
    static void applyPolicy(const Profile::Policy* policy, Hold& hold);
    void notePolicy(const Profile::Policy* policy);

    // The kinds of request and query (requests.cpp, queries.cpp, dumps.cpp).
    int32_t apply(const MirxRequestParcel& parcel);
    int32_t acquire(const MirxRequestParcel& parcel);
    int32_t noteThermalLevels(const MirxRequestParcel& parcel);
    std::vector<MirxRequestData> answer(const MirxRequestParcel& query) const;
    int32_t diagnose(const MirxRequestParcel& parcel);

    Journal& mJournal;
    const Profile mProfile;
    Timeline* const mTimeline;
    const std::shared_ptr<Faults> mFaults;
    const OnReplaced mOnReplaced;
    mutable std::mutex mMutex;
    std::string mRefused GUARDED_BY(mMutex);
    std::map<std::string, size_t> mCalls GUARDED_BY(mMutex);
    std::map<int32_t, std::string> mThermalLevels GUARDED_BY(mMutex);
    History mHistory;
    Properties mProperties;
    Listeners mListeners;
    Holds mHolds;  // last: its thread uses the members above
};

}  // namespace simulator
