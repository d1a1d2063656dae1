// Relays calls over the driver from one service name to another: test-relay BEHIND NAME
//
// It registers NAME and forwards to the test's own object, registered as BEHIND. A test kills the
// relay instead of its own process, in which the object lives.
#include <future>
#include <iostream>

#include <android/binder_libbinder.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <binder/Binder.h>

#include <aidl/vendor/tavro/hardware/mirx/BnMirx.h>
#include <aidl/vendor/tavro/hardware/mirx/BnMirxCallback.h>

namespace {

using namespace aidl::vendor::tavro::hardware::mirx;
using ndk::ScopedAStatus;

// Forwards each call from a new thread. The driver would deliver a call back into the calling
// process to the calling thread; from a new thread it arrives on a binder thread, as a foreign call
// does.
class Elsewhere : public android::BBinder {
  public:
    explicit Elsewhere(const ndk::SpAIBinder& to) : mTo(AIBinder_toPlatformBinder(to.get())) {}

    template <typename Interface>
    static std::shared_ptr<Interface> make(const ndk::SpAIBinder& to) {
        const auto elsewhere = android::sp<Elsewhere>::make(to);
        return Interface::fromBinder(ndk::SpAIBinder(AIBinder_fromPlatformBinder(elsewhere)));
    }
    const android::String16& getInterfaceDescriptor() const override {
        return mTo->getInterfaceDescriptor();
    }

  protected:
    android::status_t onTransact(uint32_t code, const android::Parcel& in, android::Parcel* out,
                                 uint32_t flags) override {
        const auto call = [&] { return mTo->transact(code, in, out, flags); };
        return std::async(std::launch::async, call).get();
    }

  private:
    const android::sp<android::IBinder> mTo;
};

class CallbackRelay : public BnMirxCallback {
  public:
    explicit CallbackRelay(std::shared_ptr<IMirxCallback> to) : mTo(std::move(to)) {}
    ScopedAStatus onCallback(const std::vector<MirxRequestData>& data) override {
        return mTo->onCallback(data);
    }

  private:
    const std::shared_ptr<IMirxCallback> mTo;
};

std::shared_ptr<IMirxCallback> relayed(const std::shared_ptr<IMirxCallback>& callback) {
    if (callback == nullptr) return nullptr;
    return ndk::SharedRefBase::make<CallbackRelay>(
            Elsewhere::make<IMirxCallback>(callback->asBinder()));
}

class Relay : public IMirxDelegator {
  public:
    using IMirxDelegator::IMirxDelegator;

    ScopedAStatus request(const MirxRequestParcel& parcel, int32_t* result) override {
        MirxRequestParcel copy = parcel;
        copy.callback = relayed(parcel.callback);
        return IMirxDelegator::request(copy, result);
    }
    ScopedAStatus listeningRegister(const MirxRequestParcel& parcel,
                                    const std::shared_ptr<IMirxCallback>& callback,
                                    int32_t* result) override {
        return IMirxDelegator::listeningRegister(parcel, relayed(callback), result);
    }
    ScopedAStatus thermalListeningRegister(const std::vector<int32_t>& ids,
                                           const std::shared_ptr<IMirxCallback>& callback,
                                           int32_t* result) override {
        return IMirxDelegator::thermalListeningRegister(ids, relayed(callback), result);
    }
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    ABinderProcess_setThreadPoolMaxThreadCount(15);
    ABinderProcess_startThreadPool();
    const ndk::SpAIBinder behind(AServiceManager_checkService(argv[1]));
    if (behind.get() == nullptr) return 1;
    // Ends with the test.
    const ndk::ScopedAIBinder_DeathRecipient end(
            AIBinder_DeathRecipient_new([](void*) { std::_Exit(1); }));
    if (AIBinder_linkToDeath(behind.get(), end.get(), nullptr) != STATUS_OK) return 1;
    const auto relay = ndk::SharedRefBase::make<Relay>(Elsewhere::make<IMirx>(behind));
    if (AServiceManager_addService(relay->asBinder().get(), argv[2]) != EX_NONE) return 1;
    std::cout << "serving" << std::endl;
    ABinderProcess_joinThreadPool();
}
