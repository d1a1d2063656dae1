// The fixture of every test that calls the service.
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

// A test with the service declared and served by `service` in this process, reached through the
// chosen transport with real parcels; both bindings empty.
class BinderTest : public testing::Test {
  protected:
    BinderTest();
    ~BinderTest() override;

    static void declare();
    static void undeclare();
    // Registers `service`, or `object` in its place, under the service's name.
    void serve();
    static void serve(const ndk::SpAIBinder& object);
    // Registers `object`, which is not what the service should be.
    static void serveAsItIs(const ndk::SpAIBinder& object) {
        Transport::chosen().serveAsItIs(object);
    }
    // Starts mirx-simulator and waits until it serves; it takes the place of what served before.
    static std::unique_ptr<ChildProcess> startSimulator();
    // Ends the service as its death would; notices of it may come later.
    static void stopServing();
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

    static PlatformSeam& services();
    static const std::string& folder();

    // Waits until `condition` holds; false when it does not in time.
    static bool eventually(const std::function<bool()>& condition,
                           std::chrono::seconds time = std::chrono::seconds(10));

    LogCapture log;
    std::shared_ptr<RecordingService> service = ndk::SharedRefBase::make<RecordingService>();
};
