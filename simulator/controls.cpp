// The faults and the controls of the simulated service.
#include <signal.h>
#include <unistd.h>

#include <thread>
#include <utility>

#include <android-base/strings.h>

#include "simulator/describe.h"
#include "simulator/faulty_callback.h"
#include "simulator/mirx_service.h"

namespace simulator {

using ndk::ScopedAStatus;

static constexpr char kFault[] = "simulator.fault";

// Ends the process without any cleanup, as if it was killed.
static void die() {
    kill(getpid(), SIGKILL);
    pause();
}

ScopedAStatus MirxService::serve(const Call& call,
                                 const std::function<void(const Misbehaviour&)>& work) {
    {
        std::lock_guard lock(mMutex);
        ++mCalls[call.kind ? std::string(call.operation) + " " + requestKindName(*call.kind)
                           : call.operation];
    }
    const Misbehaviour fault = mFaults->next(call);
    if (!fault.faults.empty()) {
        mJournal.line("fault   " + fault.faults + " in " + call.operation);
    }
    if (fault.death == Misbehaviour::Death::kBefore) die();
    if (fault.never || fault.delay.count() > 0) mFaults->wait(fault);
    if (fault.status != STATUS_OK) return ScopedAStatus::fromStatus(fault.status);
    if (fault.exception == EX_SERVICE_SPECIFIC) return ScopedAStatus::fromServiceSpecificError(1);
    if (fault.exception != EX_NONE) return ScopedAStatus::fromExceptionCode(fault.exception);
    work(fault);
    if (fault.death == Misbehaviour::Death::kAfter) {
        // The answer is sent when this thread returns.
        std::thread([] {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            die();
        }).detach();
    }
    return ScopedAStatus::ok();
}

ScopedAStatus MirxService::serve(const Call& call, int32_t* result,
                                 const std::function<int32_t(const Misbehaviour&)>& work) {
    return serve(call, [&](const Misbehaviour& fault) {
        *result = fault.answer ? *fault.answer : work(fault);
    });
}

std::shared_ptr<IMirxCallback> MirxService::withFaults(
        const std::shared_ptr<IMirxCallback>& callback, const Call& call) {
    if (callback == nullptr) return nullptr;
    return ndk::SharedRefBase::make<FaultyCallback>(callback, call, mFaults);
}

MirxRequestParcel MirxService::withFaults(const MirxRequestParcel& parcel, const Call& call,
                                          const Misbehaviour& fault) {
    MirxRequestParcel result = parcel;
    result.callback = withFaults(parcel.callback, call);
    if (parcel.callback != nullptr && fault.callback == Misbehaviour::Callback::kEarly) {
        parcel.callback->onCallback(parcel.requestData);
        result.callback = nullptr;
    }
    return result;
}

std::string MirxService::control(const std::string& key) const {
    if (key == "simulator.pid") return std::to_string(getpid());
    if (key == kFault) return android::base::Join(mFaults->describe(), '\n');
    std::lock_guard lock(mMutex);
    return key == "simulator.refused" ? mRefused : "";
}

int32_t MirxService::setControl(const std::string& key, const std::string& value) {
    if (key == "simulator.replaced") {
        mOnReplaced(value);
        return 0;
    }
    if (key != kFault) return -1;
    std::string refused;
    if (value.empty()) {
        mFaults->clear();
        mJournal.line("faults   cleared");
    } else {
        refused = mFaults->add(value);
        mJournal.line("fault    " + value + (refused.empty() ? " from now on" : ": " + refused));
    }
    std::lock_guard lock(mMutex);
    mRefused = refused;
    return refused.empty() ? 0 : -1;
}

}  // namespace simulator
