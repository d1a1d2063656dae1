// A service that answers every call at once.
#pragma once

#include <aidl/vendor/tavro/hardware/mirx/BnMirx.h>

namespace bench {

using aidl::vendor::tavro::hardware::mirx::IMirxCallback;
using aidl::vendor::tavro::hardware::mirx::MirxRequestData;
using aidl::vendor::tavro::hardware::mirx::MirxRequestParcel;

// A request with a callback is called back before it is answered. A state query gets a value for
// each resource in the order of the request, or one element if it names no resource.
class QuietService : public aidl::vendor::tavro::hardware::mirx::BnMirx {
  public:
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
};

}  // namespace bench
