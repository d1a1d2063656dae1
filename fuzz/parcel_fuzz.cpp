// Fuzzes the parcels that the service's stub reads.
//
// Input: one byte for the transaction code, then the arguments.
#include <cstdlib>

#include <aidl/vendor/tavro/hardware/mirx/BnMirx.h>
#include <android/binder_libbinder.h>
#include <binder/Parcel.h>

#include "fuzz/fake_service.h"
#include "simulator/describe.h"

using namespace aidl::vendor::tavro::hardware::mirx;
using ndk::ScopedAStatus;

namespace {

// Checks that a received parcelable survives writing and reading, and has a one-line description.
template <typename Parcelable>
void check(const Parcelable& received) {
    const ndk::ScopedAParcel parcel(AParcel_create());
    Parcelable again;
    if (received.writeToParcel(parcel.get()) != STATUS_OK) std::abort();
    AParcel_setDataPosition(parcel.get(), 0);
    if (again.readFromParcel(parcel.get()) != STATUS_OK) std::abort();
    if (again != received) std::abort();
    if (simulator::describe({received}).find('\n') != std::string::npos) std::abort();
}

void check(const std::vector<MirxRequestData>& received) {
    for (const MirxRequestData& element : received) check(element);
}

class Service : public BnMirx {
    ScopedAStatus take(int32_t* result) {
        *result = 1;
        return ScopedAStatus::ok();
    }
    ScopedAStatus init() override { return ScopedAStatus::ok(); }
    ScopedAStatus request(const MirxRequestParcel& parcel, int32_t* result) override {
        check(parcel);
        return take(result);
    }
    ScopedAStatus release(int32_t, int32_t* result) override { return take(result); }
    ScopedAStatus stateRequest(const MirxRequestParcel& parcel,
                               std::vector<MirxRequestData>* result) override {
        check(parcel);
        *result = parcel.requestData;
        return ScopedAStatus::ok();
    }
    ScopedAStatus listeningRegister(const MirxRequestParcel& parcel,
                                    const std::shared_ptr<IMirxCallback>&,
                                    int32_t* result) override {
        check(parcel);
        return take(result);
    }
    ScopedAStatus listeningUnregister(int32_t, int32_t* result) override { return take(result); }
    ScopedAStatus propertyGet(const std::string& key, std::string* result) override {
        *result = key;
        return ScopedAStatus::ok();
    }
    ScopedAStatus propertySet(const std::string&, const std::string&, int32_t* result) override {
        return take(result);
    }
    ScopedAStatus thermalListeningRegister(const std::vector<int32_t>&,
                                           const std::shared_ptr<IMirxCallback>&,
                                           int32_t* result) override {
        return take(result);
    }
    ScopedAStatus thermalListeningUnregister(int32_t, int32_t* result) override {
        return take(result);
    }
    ScopedAStatus reservedOperation() override { return ScopedAStatus::ok(); }
    ScopedAStatus setRelatedSysInfo(int32_t, int32_t, int32_t* result) override {
        return take(result);
    }
    ScopedAStatus ruleCtl(int32_t, int32_t, const std::vector<MirxRequestData>& resources,
                          int32_t* result) override {
        check(resources);
        return take(result);
    }
    ScopedAStatus oneWayRequest(const MirxRequestParcel& parcel) override {
        check(parcel);
        return ScopedAStatus::ok();
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    fuzz::answerNothing();
    static const auto service = ndk::SharedRefBase::make<Service>();
    static const ndk::SpAIBinder binder = service->asBinder();
    android::Parcel in, reply;
    in.writeInterfaceToken(android::String16(IMirx::descriptor));
    in.write(data + 1, size - 1);
    in.setDataPosition(0);
    constexpr uint32_t kOneWay = 14;
    const uint32_t code = data[0];
    AIBinder_toPlatformBinder(binder.get())
            ->transact(code, in, code == kOneWay ? nullptr : &reply,
                       code == kOneWay ? FLAG_ONEWAY : 0);
    return 0;
}
