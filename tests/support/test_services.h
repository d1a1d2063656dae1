// The fixture for tests that call the service.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include <binder/IBinder.h>
#include <gtest/gtest.h>

#include "tests/support/child_process.h"
#include "tests/support/log_capture.h"
#include "tests/support/recording_service.h"
#include "tests/support/platform_seam.h"
#include "tests/support/transport.h"

// Starts each test with empty bindings and a declared service: `service`, an object of this process
// that calls reach through the chosen transport, with real parcels.
class BinderTest : public testing::Test {
  protected:
    BinderTest();
    ~BinderTest() override;

    static void declare();
    static void undeclare();
    // Registers `service` or `object` under the service's name.
    void serve();
    static void serve(const ndk::SpAIBinder& object);
    // Registers an object that does not implement the service's interface.
    static void serveAsItIs(const ndk::SpAIBinder& object) {
        Transport::chosen().serveAsItIs(object);
    }
    // Starts mirx-simulator in place of the current service and waits until it serves.
    static std::unique_ptr<ChildProcess> startSimulator();
    // Ends the service as its death would. Death notices may arrive later.
    static void stopServing();
    // Ends the service as its death would, and waits until `notices` bindings have logged it.
    void endService(int notices);

    // Delays the notice of the service's death while it exists, so that the library's next call
    // reaches a dead service. Must be made before the library binds.
    class HeldBackDeath {
      public:
        HeldBackDeath();
        ~HeldBackDeath();

      private:
        struct Recipient;
        android::sp<android::IBinder> mBinder;
        android::sp<Recipient> mRecipient;
    };

    static PlatformSeam& services();
    static const std::string& folder();

    // Waits until `condition` is true. Returns false if it is still false after `time`.
    static bool eventually(const std::function<bool()>& condition,
                           std::chrono::seconds time = std::chrono::seconds(10));

    LogCapture log;
    std::shared_ptr<RecordingService> service = ndk::SharedRefBase::make<RecordingService>();
};
