// dovctl doctor: services and machines that a simulator cannot be.
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include <android/binder_libbinder.h>
#include <binder/Binder.h>
#include <gmock/gmock.h>
#include <json/json.h>

#include <aidl/vendor/tavro/hardware/mirx/IMirx.h>

#include "common/transport.h"
#include "dovctl/dovctl.h"
#include "tests/support/child_process.h"
#include "tests/support/raw_service.h"
#include "tests/support/test_services.h"
#include "tests/support/test_waiter.h"

using aidl::vendor::tavro::hardware::mirx::IMirx;

// A service of another build.
static ndk::SpAIBinder serviceOf(int32_t version, const std::string& hash) {
    // The codes at which every stable interface has its version and its hash.
    constexpr transaction_code_t kVersion = FIRST_CALL_TRANSACTION + 16777214;
    constexpr transaction_code_t kHash = FIRST_CALL_TRANSACTION + 16777213;
    return makeRawService([=](transaction_code_t code, const AParcel*, AParcel* out) {
        AParcel_writeStatusHeader(out, ndk::ScopedAStatus::ok().get());
        if (code == kVersion) return AParcel_writeInt32(out, version);
        if (code != kHash) return binder_status_t{STATUS_UNKNOWN_TRANSACTION};
        return AParcel_writeString(out, hash.c_str(), static_cast<int32_t>(hash.size()));
    });
}

class DoctorTest : public BinderTest {
  protected:
    // Returns "exit code, step: finding" of the failed step.
    static std::string examine(const dovcommon::Transport& transport) {
        std::ostringstream out, err;
        TestWaiter waiter;
        const int code = dovctl::Dovctl({out}, {err}, waiter, transport)
                                 .run({"doctor", "--json", "--timeout", patience()});
        EXPECT_EQ(err.str(), "");
        std::string states, failed;
        Json::Value steps;
        std::istringstream(out.str()) >> steps;
        for (const Json::Value& step : steps) {
            states += step["state"].asString() + ", ";
            if (step["advice"] == "") continue;  // only a failed step gives advice
            failed = std::to_string(code) + ", " + step["step"].asString() + ": " +
                     step["finding"].asString();
        }
        EXPECT_THAT(states, testing::MatchesRegex("(ok, )*failed, (not tried, )*"));
        return failed;
    }

    static void expect(const std::string& failure) {
        dovcommon::Transport transport{.sockets = true, .place = folder(), .problem = {}};
        if (overDriver()) transport = dovcommon::transport();
        EXPECT_THAT(examine(transport), testing::StartsWith(failure));
    }
};

TEST_F(DoctorTest, firstFailedStepIsNamedWithItsCause) {
    const std::string fragment = folder() + "/malformed.xml";
    const std::string undeclared =
            "3, declared: no VINTF manifest declares " + std::string(kServiceName);
    undeclare();
    expect(undeclared);
    std::ofstream(fragment) << "<manifest>";
    expect(undeclared + (overDriver() ? "" : "; " + fragment + ": "));
    std::filesystem::remove(fragment);
    declare();
    stopServing();
    expect("3, running: it is declared, but no process has registered it");
    const auto another = android::sp<android::BBinder>::make();
    serveAsItIs(ndk::SpAIBinder(AIBinder_fromPlatformBinder(another)));
    expect("3, running: what is registered is another interface");
    const std::string version = std::to_string(IMirx::version);
    serveAsItIs(serviceOf(IMirx::version, "notfrozen"));
    expect("1, interface: version " + version + ", hash notfrozen; this client has version " +
           version + ", hash " + IMirx::hash);
    serveAsItIs(serviceOf(IMirx::version - 1, IMirx::hash));
    expect("1, interface: version 0");
    // A later version is accepted, but this one has no operations.
    serveAsItIs(serviceOf(IMirx::version + 1, "later"));
    expect("1, init: init failed: ");
    serve();
    expect(std::string("1, callbacks: the service held, but did not call back within ") +
           patience() + " ms");
}

TEST_F(DoctorTest, missingDriverFailsTheTransportStep) {
    const dovcommon::Transport driver = dovcommon::transport();
    EXPECT_FALSE(driver.sockets) << "no other transport is linked into this program";
    if (driver.problem.empty()) GTEST_SKIP() << "this machine has a binder driver";
    EXPECT_EQ(examine(driver), "3, transport: /dev/binder: No such file or directory");
}

// The programs themselves, whose transport depends on what is linked into them.
TEST_F(DoctorTest, unusableFolderFailsTheTransportStep) {
    if (overDriver()) GTEST_SKIP() << "about the folder of sockets";
    setenv("DOV_SERVICE_DIR", "/proc/none/such", 1);
    ChildProcess doctor(DOVCTL, {"doctor"});
    ChildProcess acquire(DOVCTL, {"acquire", "0"}, ChildProcess::Errors::kRead);
    ChildProcess simulator(MIRX_SIMULATOR);
    setenv("DOV_SERVICE_DIR", folder().c_str(), 1);
    const std::string problem = "/proc/none/such: No such file or directory";
    EXPECT_THAT(doctor.lines(2),
                testing::ElementsAre("failed     transport        " + problem,
                                     "           what to do: mkdir -p -m 700 /proc/none/such"));
    EXPECT_EQ(acquire.lines(1),
              std::vector{"dovctl: acquire: no service can be reached: " + problem});
    EXPECT_EQ(doctor.wait(), 3);
    EXPECT_EQ(acquire.wait(), 3);
    EXPECT_EQ(simulator.wait(), 1);
}
