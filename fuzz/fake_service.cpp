// A fake service without a transport, whose replies are bytes that a fuzz target chooses.
#include "fuzz/fake_service.h"

#include <android/log.h>
#include <binder/Binder.h>
#include <binder/Parcel.h>

#include "common/service.h"
#include "host/services/socket_service_manager.h"

using android::sp;
using android::status_t;
using android::String16;

namespace fuzz {
namespace {

bool gDeclared = true;
std::span<const uint8_t> gReply;

// The library treats this object as one of another process, so every call uses parcels.
class Remote : public android::BBinder {
  public:
    const String16& getInterfaceDescriptor() const override {
        static const String16& descriptor = *new String16(dovcommon::IMirx::descriptor);
        return descriptor;
    }
    status_t linkToDeath(const sp<DeathRecipient>&, void*, uint32_t) override {
        return android::OK;
    }
    status_t unlinkToDeath(const android::wp<DeathRecipient>&, void*, uint32_t,
                           android::wp<DeathRecipient>*) override {
        return android::OK;
    }

  protected:
    status_t onTransact(uint32_t, const android::Parcel&, android::Parcel* reply,
                        uint32_t) override {
        return reply == nullptr ? android::OK : reply->setData(gReply.data(), gReply.size());
    }
};

class Services : public hostbinder::SocketServiceManager {
  public:
    Services() : SocketServiceManager("") {}

    bool isDeclared(const String16&) override { return gDeclared; }
    sp<android::IBinder> checkService(const String16&) const override { return mRemote; }
    sp<android::IBinder> waitForService(const String16&) override { return mRemote; }

  private:
    const sp<Remote> mRemote = sp<Remote>::make();
};

[[maybe_unused]] const bool gInstalled = [] {
    android::setDefaultServiceManager(sp<Services>::make());
    __android_log_set_logger([](const __android_log_message*) {});
    return true;
}();

}  // namespace

void answerWith(std::span<const uint8_t> reply) {
    gDeclared = true;
    gReply = reply;
}

void answerNothing() {
    gDeclared = false;
}

}  // namespace fuzz
