// The simulated resource-control service.
#include "simulator/mirx_service.h"

#include <set>
#include <utility>

#include <android-base/stringprintf.h>

#include "aidl/request_kinds.h"
#include "simulator/describe.h"

namespace simulator {

using namespace mirx;

using android::base::StringPrintf;
using ndk::ScopedAStatus;

MirxService::MirxService(Journal& journal, Profile profile, Timeline* timeline)
    : mJournal(journal),
      mProfile(std::move(profile)),
      mTimeline(timeline),
      mListeners(journal),
      mHolds({.onEnd =
                      [this](const Hold& hold, End end) {
                          mJournal.line("ended    " + textOf(hold.holder) + ": " + textOf(end));
                      },
              .onChange =
                      [this](const std::vector<MirxRequestData>& changed) {
                          mListeners.notify(Listeners::Topic::kResources, changed);
                      },
              .onStep =
                      [timeline](const Hold* ended, End end, const Hold* begun,
                                 const auto& changed) {
                          if (timeline != nullptr) timeline->step(ended, end, begun, changed);
                      }}) {}

void MirxService::notePolicy(const Profile::Policy* policy) {
    if (policy == nullptr) return;
    mJournal.line("         the profile sets " + simulator::describe(policy->resources));
}

void MirxService::received(const std::string& line) {
    mJournal.line(line);
    mHistory.record(line);
}

ScopedAStatus MirxService::init() {
    mJournal.line("init");
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::request(const MirxRequestParcel& parcel, int32_t* result) {
    *result = apply(parcel);
    received("request  " + simulator::describe(parcel) + StringPrintf(" -> %d", *result));
    notePolicy(policyOf(parcel));
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::oneWayRequest(const MirxRequestParcel& parcel) {
    apply(parcel);
    received("one-way  " + simulator::describe(parcel));
    notePolicy(policyOf(parcel));
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::release(int32_t handle, int32_t* result) {
    mJournal.line(StringPrintf("release  handle %d", handle));
    *result = mHolds.end({Holder::kRequest, handle}) ? 0 : -1;
    if (*result != 0) mJournal.line(StringPrintf("         handle %d holds nothing", handle));
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::stateRequest(const MirxRequestParcel& parcel,
                                        std::vector<MirxRequestData>* result) {
    *result = answer(parcel);
    // A tool asks again and again what is held; that is no news.
    if (parcel.requestType == kHoldsQuery) return ScopedAStatus::ok();
    mJournal.line("state    " + simulator::describe(parcel) + " -> " +
                  simulator::describe(*result));
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::listeningRegister(const MirxRequestParcel& parcel,
                                             const std::shared_ptr<IMirxCallback>& callback,
                                             int32_t* result) {
    std::set<ResourceKey> keys;
    for (const MirxRequestData& data : parcel.requestData) keys.insert(keyOf(data));
    *result = mListeners.add(Listeners::Topic::kResources, std::move(keys), callback);
    mJournal.line("listen   " + simulator::describe(parcel) + StringPrintf(" -> %d", *result));
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::listeningUnregister(int32_t handle, int32_t* result) {
    *result = mListeners.remove(Listeners::Topic::kResources, handle) ? 0 : -1;
    mJournal.line(StringPrintf("unlisten handle %d -> %d", handle, *result));
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::thermalListeningRegister(const std::vector<int32_t>& ids,
                                                    const std::shared_ptr<IMirxCallback>& callback,
                                                    int32_t* result) {
    std::set<ResourceKey> keys;
    std::string line = "listen   thermal";
    for (const int32_t id : ids) {
        keys.insert({.opcode = id});
        line += StringPrintf(" %d", id);
    }
    *result = mListeners.add(Listeners::Topic::kThermal, std::move(keys), callback);
    mJournal.line(line + StringPrintf(" -> %d", *result));
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::thermalListeningUnregister(int32_t handle, int32_t* result) {
    *result = mListeners.remove(Listeners::Topic::kThermal, handle) ? 0 : -1;
    mJournal.line(StringPrintf("unlisten thermal handle %d -> %d", handle, *result));
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::propertyGet(const std::string& key, std::string* result) {
    *result = mProperties.get(key, "");
    mJournal.line("property " + quoted(key) + " -> " + quoted(*result));
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::propertySet(const std::string& key, const std::string& value,
                                       int32_t* result) {
    mProperties.set(key, value);
    *result = 0;
    mJournal.line("property " + quoted(key) + " = " + quoted(value));
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::reservedOperation() {
    mJournal.line("reserved operation");
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::setRelatedSysInfo(int32_t first, int32_t second, int32_t* result) {
    mProperties.set("sysinfo." + std::to_string(first), std::to_string(second));
    *result = 0;
    received(StringPrintf("sysinfo  %d %d", first, second));
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::ruleCtl(int32_t ruleId, int32_t status,
                                   const std::vector<MirxRequestData>& resources, int32_t* result) {
    received(StringPrintf("rule     %d status=%d data=", ruleId, status) +
             simulator::describe(resources));
    const Holder holder = {Holder::kRule, ruleId};
    const Profile::Policy* policy =
            status != 0 ? mProfile.find(Profile::Kind::kRule, ruleId, status) : nullptr;
    if (mTimeline != nullptr) {
        mTimeline->mark("rules", StringPrintf("rule %d status %d", ruleId, status),
                        {{"data", simulator::describe(resources)}});
    }
    if (status != 0) {
        Hold hold{.holder = holder, .subject = status, .resources = resources};
        applyPolicy(policy, hold);
        mHolds.put(std::move(hold));
    } else {
        mHolds.end(holder);
    }
    notePolicy(policy);
    *result = 0;
    return ScopedAStatus::ok();
}

}  // namespace simulator
