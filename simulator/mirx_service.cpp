// The operations of the simulated resource-control service.
#include "simulator/mirx_service.h"

#include <set>
#include <utility>

#include <android-base/stringprintf.h>

#include "aidl/request_kinds.h"
#include "simulator/caller.h"
#include "simulator/describe.h"
#include "simulator/faulty_reply.h"
#include "simulator/holds_query.h"
#include "simulator/message_size.h"

namespace simulator {

using namespace mirx;

using android::base::StringPrintf;
using ndk::ScopedAStatus;

namespace {

constexpr char kControl[] = "simulator.";

Call callOf(const char* operation) {
    return {.operation = operation, .pid = callingPid()};
}

Call callOf(const char* operation, const MirxRequestParcel& parcel) {
    return {.operation = operation, .kind = parcel.requestType, .pid = callerOf(parcel)};
}

}  // namespace

MirxService::MirxService(Journal& journal, Profile profile, Timeline* timeline,
                         std::shared_ptr<Faults> faults, OnReplaced onReplaced)
    : mJournal(journal),
      mProfile(std::move(profile)),
      mTimeline(timeline),
      mFaults(std::move(faults)),
      mOnReplaced(std::move(onReplaced)),
      mListeners(journal),
      mHolds([this](const Step& step) { observe(step); }) {}

void MirxService::observe(const Step& step) {
    if (step.ended != nullptr) {
        mJournal.line("ended    " + textOf(step.ended->holder) + ": " + textOf(step.why));
    }
    if (!step.changed.empty()) mListeners.notify(Listeners::Topic::kResources, step.changed);
    if (mTimeline != nullptr) mTimeline->step(step);
}

void MirxService::notePolicy(const Profile::Policy* policy) {
    if (policy == nullptr) return;
    mJournal.line("         the profile sets " + simulator::describe(policy->resources));
}

void MirxService::received(const std::string& line) {
    mJournal.line(line);
    mHistory.record(line);
}

ScopedAStatus MirxService::init() {
    return serve(callOf("init"), [&](const Misbehaviour&) { mJournal.line("init"); });
}

ScopedAStatus MirxService::request(const MirxRequestParcel& parcel, int32_t* result) {
    const Call call = callOf("request", parcel);
    return serve(call, result, [&](const Misbehaviour& fault) {
        const int32_t answer = apply(withFaults(parcel, call, fault));
        received("request  " + simulator::describe(parcel) + StringPrintf(" -> %d", answer));
        notePolicy(policyOf(parcel));
        return answer;
    });
}

ScopedAStatus MirxService::oneWayRequest(const MirxRequestParcel& parcel) {
    const Call call = callOf("oneWayRequest", parcel);
    return serve(call, [&](const Misbehaviour& fault) {
        apply(withFaults(parcel, call, fault));
        received("one-way  " + simulator::describe(parcel));
        notePolicy(policyOf(parcel));
    });
}

ScopedAStatus MirxService::release(int32_t handle, int32_t* result) {
    return serve(callOf("release"), result, [&](const Misbehaviour&) {
        mJournal.line(StringPrintf("release  handle %d", handle));
        if (mHolds.end({Holder::kRequest, handle})) return 0;
        mJournal.line(StringPrintf("         handle %d holds nothing", handle));
        return -1;
    });
}

ScopedAStatus MirxService::stateRequest(const MirxRequestParcel& parcel,
                                        std::vector<MirxRequestData>* result) {
    return serve(callOf("stateRequest", parcel), [&](const Misbehaviour& fault) {
        *result = answer(parcel);
        const size_t elements = result->size();
        result->resize(fitting(*result));
        // dovctl top polls the holds query, which would flood the journal.
        if (parcel.requestType != kHoldsQuery) {
            mJournal.line("state    " + simulator::describe(parcel) + " -> " +
                          simulator::describe(*result));
        }
        if (result->size() < elements) {
            mJournal.line(StringPrintf("         only %zu of %zu elements fit one answer",
                                       result->size(), elements));
        }
        spoil(*result, fault.reply);
    });
}

ScopedAStatus MirxService::listeningRegister(const MirxRequestParcel& parcel,
                                             const std::shared_ptr<IMirxCallback>& callback,
                                             int32_t* result) {
    const Call call = {.operation = "listeningRegister", .pid = callerOf(parcel)};
    return serve(call, result, [&](const Misbehaviour&) {
        std::set<ResourceKey> keys;
        for (const MirxRequestData& data : parcel.requestData) keys.insert(keyOf(data));
        const int32_t handle = mListeners.add(Listeners::Topic::kResources, std::move(keys),
                                              withFaults(callback, call), call.pid);
        mJournal.line("listen   " + simulator::describe(parcel) + StringPrintf(" -> %d", handle));
        return handle;
    });
}

ScopedAStatus MirxService::listeningUnregister(int32_t handle, int32_t* result) {
    return serve(callOf("listeningUnregister"), result, [&](const Misbehaviour&) {
        const int32_t answer = mListeners.remove(Listeners::Topic::kResources, handle) ? 0 : -1;
        mJournal.line(StringPrintf("unlisten handle %d -> %d", handle, answer));
        return answer;
    });
}

ScopedAStatus MirxService::thermalListeningRegister(const std::vector<int32_t>& ids,
                                                    const std::shared_ptr<IMirxCallback>& callback,
                                                    int32_t* result) {
    const Call call = callOf("thermalListeningRegister");
    return serve(call, result, [&](const Misbehaviour&) {
        std::set<ResourceKey> keys;
        std::string line = "listen   thermal";
        for (const int32_t id : ids) {
            keys.insert({.opcode = id});
            line += StringPrintf(" %d", id);
        }
        const int32_t handle = mListeners.add(Listeners::Topic::kThermal, std::move(keys),
                                              withFaults(callback, call), call.pid);
        mJournal.line(line + StringPrintf(" -> %d", handle));
        return handle;
    });
}

ScopedAStatus MirxService::thermalListeningUnregister(int32_t handle, int32_t* result) {
    return serve(callOf("thermalListeningUnregister"), result, [&](const Misbehaviour&) {
        const int32_t answer = mListeners.remove(Listeners::Topic::kThermal, handle) ? 0 : -1;
        mJournal.line(StringPrintf("unlisten thermal handle %d -> %d", handle, answer));
        return answer;
    });
}

ScopedAStatus MirxService::propertyGet(const std::string& key, std::string* result) {
    if (key.starts_with(kControl)) {
        *result = shortened(control(key), 200);
        return ScopedAStatus::ok();
    }
    return serve(callOf("propertyGet"), [&](const Misbehaviour& fault) {
        *result = mProperties.get(key, "");
        mJournal.line("property " + quoted(key) + " -> " + quoted(*result));
        *result = spoiled(*result, fault.reply);
    });
}

ScopedAStatus MirxService::propertySet(const std::string& key, const std::string& value,
                                       int32_t* result) {
    if (key.starts_with(kControl)) {
        *result = setControl(key, value);
        return ScopedAStatus::ok();
    }
    return serve(callOf("propertySet"), result, [&](const Misbehaviour&) {
        const bool accepted = mProperties.set(key, value);
        mJournal.line("property " + quoted(key) + " = " + quoted(value));
        if (accepted) return 0;
        mJournal.line(StringPrintf("         refused: %zu bytes are more than %zu", value.size(),
                                   Properties::kLongest));
        return -1;
    });
}

ScopedAStatus MirxService::reservedOperation() {
    return serve(callOf("reservedOperation"),
                 [&](const Misbehaviour&) { mJournal.line("reserved operation"); });
}

ScopedAStatus MirxService::setRelatedSysInfo(int32_t first, int32_t second, int32_t* result) {
    return serve(callOf("setRelatedSysInfo"), result, [&](const Misbehaviour&) {
        mProperties.set("sysinfo." + std::to_string(first), std::to_string(second));
        received(StringPrintf("sysinfo  %d %d", first, second));
        return 0;
    });
}

ScopedAStatus MirxService::ruleCtl(int32_t ruleId, int32_t status,
                                   const std::vector<MirxRequestData>& resources, int32_t* result) {
    const Call call = callOf("ruleCtl");
    return serve(call, result, [&](const Misbehaviour&) {
        received(StringPrintf("rule     %d status=%d data=", ruleId, status) +
                 simulator::describe(resources));
        const Holder holder = {Holder::kRule, ruleId};
        if (status == 0) {
            mHolds.end(holder);
            return 0;
        }
        const Profile::Policy* policy = mProfile.find(Profile::Kind::kRule, ruleId, status);
        Hold hold{.holder = holder, .subject = status, .resources = resources, .pid = call.pid};
        applyPolicy(policy, hold);
        mHolds.put(std::move(hold));
        notePolicy(policy);
        return 0;
    });
}

}  // namespace simulator
