// A service that answers with the bytes that a test writes.
#include "tests/support/raw_service.h"

#include <utility>

#include <android/binder_stability.h>

#include <aidl/vendor/tavro/hardware/mirx/IMirx.h>

namespace {

binder_status_t onTransact(AIBinder* binder, transaction_code_t code, const AParcel* in,
                           AParcel* out) {
    constexpr transaction_code_t kOneWayRequest = FIRST_CALL_TRANSACTION + 13;
    if (code == kOneWayRequest) return STATUS_OK;  // it has no reply
    return (*static_cast<RawAnswer*>(AIBinder_getUserData(binder)))(code, in, out);
}

}  // namespace

ndk::SpAIBinder makeRawService(RawAnswer answer) {
    static AIBinder_Class* const clazz = AIBinder_Class_define(
            aidl::vendor::tavro::hardware::mirx::IMirx::descriptor,
            [](void* given) { return given; },
            [](void* given) { delete static_cast<RawAnswer*>(given); }, onTransact);
    ndk::SpAIBinder binder(AIBinder_new(clazz, new RawAnswer(std::move(answer))));
    AIBinder_markVintfStability(binder.get());
    return binder;
}
