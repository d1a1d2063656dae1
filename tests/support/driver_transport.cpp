// The driver transport of the tests, with a relay process that can be killed.
#include <stdlib.h>

#include <filesystem>
#include <fstream>

#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <binder/Binder.h>
#include <binder/IServiceManager.h>
#include <gtest/gtest.h>

#include "tests/support/child_process.h"
#include "tests/support/eventually.h"
#include "tests/support/transport.h"

namespace {

// The name under which the relay finds the test's object, and the fragment that declares it.
constexpr char kBehindRelay[] = "vendor.tavro.hardware.mirx.IMirx/behind_relay";
constexpr char kFragment[] =
        "<manifest version=\"1.0\" type=\"device\"><hal format=\"aidl\">"
        "<name>vendor.tavro.hardware.mirx</name><fqname>IMirx/behind_relay</fqname>"
        "</hal></manifest>";

class DriverTransport : public Transport {
  public:
    DriverTransport() : Transport(true) {
        unsetenv("DOV_SERVICE_DIR");  // or child processes would use sockets
        std::ofstream(mFragment) << kFragment;
        ABinderProcess_setThreadPoolMaxThreadCount(kDriverThreads);
        ABinderProcess_startThreadPool();
    }

    ~DriverTransport() override { std::filesystem::remove(mFragment); }

    const std::string& folder() const override { return mFolder; }

    void serve(const ndk::SpAIBinder& object) override {
        stopServing();
        add(object, kBehindRelay);
        mRelay = std::make_unique<ChildProcess>(
                TEST_RELAY, std::vector<std::string>{kBehindRelay, kServiceName});
        mRelay->readUntil("serving");
    }

    void serveAsItIs(const ndk::SpAIBinder& object) override {
        stopServing();
        add(object, kServiceName);
    }

    void stopServing() override {
        if (mRelay == nullptr) return;
        mRelay.reset();
        // The service manager is notified of the death asynchronously, like every client.
        ASSERT_TRUE(eventually([] {
            return ndk::SpAIBinder(AServiceManager_checkService(kServiceName)).get() == nullptr;
        }));
        // A service cannot be unregistered. Replacing it releases the test's object.
        android::defaultServiceManager()->addService(android::String16(kBehindRelay),
                                                     android::sp<android::BBinder>::make());
    }

  private:
    static void add(const ndk::SpAIBinder& object, const char* name) {
        ASSERT_EQ(AServiceManager_addService(object.get(), name), EX_NONE) << name;
    }

    // The folder in which a device has its fragments.
    const std::string mFolder = "/vendor/etc/vintf/manifest";
    const std::string mFragment = mFolder + "/relay.xml";
    std::unique_ptr<ChildProcess> mRelay;
};

}  // namespace

std::unique_ptr<Transport> makeDriverTransport() {
    return std::make_unique<DriverTransport>();
}
