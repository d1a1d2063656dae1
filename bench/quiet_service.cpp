// A service that answers every call at once.
#include "bench/quiet_service.h"

#include <atomic>

using ndk::ScopedAStatus;

namespace bench {
namespace {

ScopedAStatus accept(int32_t* result) {
    *result = 1;
    return ScopedAStatus::ok();
}

}  // namespace

ScopedAStatus QuietService::init() {
    return ScopedAStatus::ok();
}

ScopedAStatus QuietService::request(const MirxRequestParcel& parcel, int32_t* result) {
    if (parcel.callback != nullptr) parcel.callback->onCallback(parcel.requestData);
    return accept(result);
}

ScopedAStatus QuietService::release(int32_t, int32_t* result) {
    return accept(result);
}

ScopedAStatus QuietService::stateRequest(const MirxRequestParcel& parcel,
                                         std::vector<MirxRequestData>* result) {
    *result = parcel.requestData;
    if (result->empty()) result->emplace_back();
    for (MirxRequestData& element : *result) element.value = "1500000";
    return ScopedAStatus::ok();
}

ScopedAStatus QuietService::listeningRegister(const MirxRequestParcel&,
                                              const std::shared_ptr<IMirxCallback>&,
                                              int32_t* result) {
    static std::atomic<int32_t> last = 0;
    *result = ++last;
    return ScopedAStatus::ok();
}

ScopedAStatus QuietService::listeningUnregister(int32_t, int32_t* result) {
    return accept(result);
}

ScopedAStatus QuietService::propertyGet(const std::string&, std::string* result) {
    *result = "value";
    return ScopedAStatus::ok();
}

ScopedAStatus QuietService::propertySet(const std::string&, const std::string&, int32_t* result) {
    return accept(result);
}

ScopedAStatus QuietService::thermalListeningRegister(const std::vector<int32_t>&,
                                                     const std::shared_ptr<IMirxCallback>&,
                                                     int32_t* result) {
    return accept(result);
}

ScopedAStatus QuietService::thermalListeningUnregister(int32_t, int32_t* result) {
    return accept(result);
}

ScopedAStatus QuietService::reservedOperation() {
    return ScopedAStatus::ok();
}

ScopedAStatus QuietService::setRelatedSysInfo(int32_t, int32_t, int32_t* result) {
    return accept(result);
}

ScopedAStatus QuietService::ruleCtl(int32_t, int32_t, const std::vector<MirxRequestData>&,
                                    int32_t* result) {
    return accept(result);
}

ScopedAStatus QuietService::oneWayRequest(const MirxRequestParcel&) {
    return ScopedAStatus::ok();
}

}  // namespace bench
