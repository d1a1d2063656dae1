// A client's callback that the service's faults can disturb.
#pragma once

#include <memory>
#include <utility>

#include "simulator/faults.h"
#include "simulator/listeners.h"

namespace simulator {

// Calls the client's object, and has its binder, so that links to death work.
class FaultyCallback : public IMirxCallback {
  public:
    FaultyCallback(std::shared_ptr<IMirxCallback> callback, Call call,
                   std::shared_ptr<Faults> faults)
        : mCallback(std::move(callback)), mCall(call), mFaults(std::move(faults)) {
        mCall.isCallback = true;
    }

    ndk::ScopedAStatus onCallback(const std::vector<MirxRequestData>& data) override {
        Misbehaviour fault = mFaults->next(mCall);
        switch (fault.callback) {
            case Misbehaviour::Callback::kNever: return ndk::ScopedAStatus::ok();
            case Misbehaviour::Callback::kTwice: mCallback->onCallback(data); break;
            case Misbehaviour::Callback::kLate:
                fault.delay = std::chrono::seconds(1);
                mFaults->wait(fault);
                break;
            default: break;
        }
        return mCallback->onCallback(data);
    }

    ndk::SpAIBinder asBinder() override { return mCallback->asBinder(); }
    bool isRemote() override { return mCallback->isRemote(); }
    ndk::ScopedAStatus getInterfaceVersion(int32_t* version) override {
        return mCallback->getInterfaceVersion(version);
    }
    ndk::ScopedAStatus getInterfaceHash(std::string* hash) override {
        return mCallback->getInterfaceHash(hash);
    }

  private:
    const std::shared_ptr<IMirxCallback> mCallback;
    Call mCall;
    const std::shared_ptr<Faults> mFaults;
};

}  // namespace simulator
