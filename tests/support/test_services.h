// The service manager of a test process, and the fixture of every test that calls the service.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "host/services/socket_service_manager.h"
#include "tests/support/log_capture.h"
#include "tests/support/recording_service.h"

inline constexpr char kServiceName[] = "vendor.tavro.hardware.mirx.IMirx/default";

// The real service manager over sockets, with what a test cannot produce for real added: it counts,
// and it can hand out an object that nobody can link to death.
class TestServices : public hostbinder::SocketServiceManager {
  public:
    explicit TestServices(std::string folder) : SocketServiceManager(std::move(folder)) {}

    // How often it was asked whether a service is declared: once for a binding, twice when it is
    // not.
    std::atomic<int> declarationChecks = 0;
    // How often a service was waited for.
    std::atomic<int> waits = 0;
    // Handed out instead of a proxy when set: linking to the death of an object of one's own
    // process fails.
    android::sp<android::IBinder> localObject;

    bool isDeclared(const android::String16& name) override;
    android::sp<android::IBinder> checkService(const android::String16& name) const override;
    android::sp<android::IBinder> waitForService(const android::String16& name) override;
};

// A test with a folder of services of its own, the service declared and served by `service` in this
// process, reached through the socket transport with real parcels; both bindings empty.
class BinderTest : public testing::Test {
  protected:
    BinderTest();
    ~BinderTest() override;

    static void declare();
    static void undeclare();
    // Registers `service`, or `object` in its place, under the service's name.
    void serve();
    static void serve(const ndk::SpAIBinder& object);
    // Ends the service as its death would, and waits until `notices` bindings have heard of it.
    void endService(int notices);

    // While it exists, the running service's death stays unheard of: the library's next call meets
    // a dead service. Made before the library binds.
    class HeldBackDeath {
      public:
        HeldBackDeath();
        ~HeldBackDeath();

      private:
        struct Recipient;
        android::sp<android::IBinder> mBinder;
        android::sp<Recipient> mRecipient;
    };

    static TestServices& services();
    static const std::string& folder();

    // Waits until `condition` holds; false when it does not in time.
    static bool eventually(const std::function<bool()>& condition,
                           std::chrono::seconds time = std::chrono::seconds(10));

    LogCapture log;
    std::shared_ptr<RecordingService> service = ndk::SharedRefBase::make<RecordingService>();
};
