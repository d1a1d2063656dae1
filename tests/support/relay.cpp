// Relays calls over the driver from one service name to another: test-relay BEHIND NAME
//
// It registers NAME and forwards to the test's own object, registered as BEHIND. A test kills the
// relay instead of its own process, in which the object lives.
#include <future>
#include <iostream>

#include <android/binder_manager.h>
#include <android/binder_process.h>

#include <aidl/vendor/tavro/hardware/mirx/BnMirx.h>
#include <aidl/vendor/tavro/hardware/mirx/BnMirxCallback.h>

namespace {

using namespace aidl::vendor::tavro::hardware::mirx;
using ndk::ScopedAStatus;
using std::string;
using std::vector;

// Makes the call on a new thread. The driver would deliver a call back into the calling process to
// the calling thread; from a new thread it arrives on a binder thread, as a foreign call does.
template <typename Call>
ScopedAStatus elsewhere(const Call& call) {
    return std::async(std::launch::async, call).get();
}

class CallbackRelay : public BnMirxCallback {
  public:
    explicit CallbackRelay(std::shared_ptr<IMirxCallback> to) : mTo(std::move(to)) {}
    ScopedAStatus onCallback(const vector<MirxRequestData>& data) override {
        return elsewhere([&] { return mTo->onCallback(data); });
    }

  private:
    const std::shared_ptr<IMirxCallback> mTo;
};

std::shared_ptr<IMirxCallback> relayed(const std::shared_ptr<IMirxCallback>& callback) {
    if (callback == nullptr) return nullptr;
    return ndk::SharedRefBase::make<CallbackRelay>(callback);
}

MirxRequestParcel relayed(const MirxRequestParcel& parcel) {
    MirxRequestParcel copy = parcel;
    copy.callback = relayed(parcel.callback);
    return copy;
}

class Relay : public BnMirx {
  public:
    explicit Relay(std::shared_ptr<IMirx> to) : mTo(std::move(to)) {}

    ScopedAStatus init() override {
        return elsewhere([&] { return mTo->init(); });
    }
    ScopedAStatus request(const MirxRequestParcel& parcel, int32_t* result) override {
        return elsewhere([&] { return mTo->request(relayed(parcel), result); });
    }
    ScopedAStatus release(int32_t handle, int32_t* result) override {
        return elsewhere([&] { return mTo->release(handle, result); });
    }
    ScopedAStatus stateRequest(const MirxRequestParcel& parcel,
                               vector<MirxRequestData>* result) override {
        return elsewhere([&] { return mTo->stateRequest(relayed(parcel), result); });
    }
    ScopedAStatus listeningRegister(const MirxRequestParcel& parcel,
                                    const std::shared_ptr<IMirxCallback>& callback,
                                    int32_t* result) override {
        return elsewhere(
                [&] { return mTo->listeningRegister(relayed(parcel), relayed(callback), result); });
    }
    ScopedAStatus listeningUnregister(int32_t handle, int32_t* result) override {
        return elsewhere([&] { return mTo->listeningUnregister(handle, result); });
    }
    ScopedAStatus propertyGet(const string& key, string* result) override {
        return elsewhere([&] { return mTo->propertyGet(key, result); });
    }
    ScopedAStatus propertySet(const string& key, const string& value, int32_t* result) override {
        return elsewhere([&] { return mTo->propertySet(key, value, result); });
    }
    ScopedAStatus thermalListeningRegister(const vector<int32_t>& ids,
                                           const std::shared_ptr<IMirxCallback>& callback,
                                           int32_t* result) override {
        return elsewhere(
                [&] { return mTo->thermalListeningRegister(ids, relayed(callback), result); });
    }
    ScopedAStatus thermalListeningUnregister(int32_t handle, int32_t* result) override {
        return elsewhere([&] { return mTo->thermalListeningUnregister(handle, result); });
    }
    ScopedAStatus reservedOperation() override {
        return elsewhere([&] { return mTo->reservedOperation(); });
    }
    ScopedAStatus setRelatedSysInfo(int32_t first, int32_t second, int32_t* result) override {
        return elsewhere([&] { return mTo->setRelatedSysInfo(first, second, result); });
    }
    ScopedAStatus ruleCtl(int32_t ruleId, int32_t status, const vector<MirxRequestData>& resources,
                          int32_t* result) override {
        return elsewhere([&] { return mTo->ruleCtl(ruleId, status, resources, result); });
    }
    ScopedAStatus oneWayRequest(const MirxRequestParcel& parcel) override {
        return elsewhere([&] { return mTo->oneWayRequest(relayed(parcel)); });
    }

  private:
    const std::shared_ptr<IMirx> mTo;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    ABinderProcess_setThreadPoolMaxThreadCount(15);
    ABinderProcess_startThreadPool();
    const ndk::SpAIBinder behind(AServiceManager_checkService(argv[1]));
    const auto service = IMirx::fromBinder(behind);
    if (service == nullptr) return 1;
    // Ends with the test.
    const ndk::ScopedAIBinder_DeathRecipient end(
            AIBinder_DeathRecipient_new([](void*) { std::_Exit(1); }));
    if (AIBinder_linkToDeath(behind.get(), end.get(), nullptr) != STATUS_OK) return 1;
    const auto relay = ndk::SharedRefBase::make<Relay>(service);
    if (AServiceManager_addService(relay->asBinder().get(), argv[2]) != EX_NONE) return 1;
    std::cout << "serving" << std::endl;
    ABinderProcess_joinThreadPool();
}
