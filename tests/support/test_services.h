// The fixture for tests that call the service.
#pragma once

#include <memory>
#include <string>

#include <binder/IBinder.h>
#include <gtest/gtest.h>

#include "tests/support/child_process.h"
#include "tests/support/eventually.h"
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
    void serve() { serve(service->asBinder()); }
    static void serve(const ndk::SpAIBinder& object) { Transport::chosen().serve(object); }
    // Registers an object that does not implement the service's interface.
    static void serveAsItIs(const ndk::SpAIBinder& object) {
        Transport::chosen().serveAsItIs(object);
    }
    // Starts mirx-simulator in place of the current service and waits until it serves.
    static std::unique_ptr<ChildProcess> startSimulator();
    // Ends the service as its death would. Death notices may arrive later.
    static void stopServing() { Transport::chosen().stopServing(); }
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

    static PlatformSeam& services() { return platformSeam(); }
    static const std::string& folder() { return Transport::chosen().folder(); }

    LogCapture log;
    std::shared_ptr<RecordingService> service = ndk::SharedRefBase::make<RecordingService>();
};
