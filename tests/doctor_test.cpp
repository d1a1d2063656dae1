// dovctl doctor: services and machines that a simulator cannot be.
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include <android/binder_stability.h>

#include <gmock/gmock.h>
#include <json/json.h>

#include <aidl/vendor/tavro/hardware/mirx/IMirx.h>

#include "common/transport.h"
#include "dovctl/dovctl.h"
#include "tests/support/child_process.h"
#include "tests/support/test_services.h"
#include "tests/support/test_waiter.h"

using aidl::vendor::tavro::hardware::mirx::IMirx;

namespace {

// The version and hash that a service of another build reports.
struct Build {
    int32_t version;
    std::string hash;
};

// A class lives as long as the process, so each is defined once.
AIBinder_Class* defineClass(const char* descriptor) {
    // The codes at which every stable interface has its version and its hash.
    static constexpr transaction_code_t kVersion = FIRST_CALL_TRANSACTION + 16777214;
    static constexpr transaction_code_t kHash = FIRST_CALL_TRANSACTION + 16777213;
    return AIBinder_Class_define(
            descriptor, [](void* data) { return data; },
            [](void* data) { delete static_cast<Build*>(data); },
            [](AIBinder* binder, transaction_code_t code, const AParcel*, AParcel* out) {
                const auto& build = *static_cast<Build*>(AIBinder_getUserData(binder));
                AParcel_writeStatusHeader(out, ndk::ScopedAStatus::ok().get());
                if (code == kVersion) return AParcel_writeInt32(out, build.version);
                if (code != kHash) return binder_status_t{STATUS_UNKNOWN_TRANSACTION};
                const auto size = static_cast<int32_t>(build.hash.size());
                return AParcel_writeString(out, build.hash.c_str(), size);
            });
}

ndk::SpAIBinder serviceOf(const Build& build) {
    static AIBinder_Class* const type = defineClass(IMirx::descriptor);
    ndk::SpAIBinder binder(AIBinder_new(type, new Build(build)));
    AIBinder_markVintfStability(binder.get());
    return binder;
}

ndk::SpAIBinder serviceOfAnotherInterface() {
    static AIBinder_Class* const type = defineClass("another");
    return ndk::SpAIBinder(AIBinder_new(type, new Build{1, ""}));
}

}  // namespace

class DoctorTest : public BinderTest {
  protected:
    struct Report {
        int code;
        std::string failed;  // "step: finding"
    };

    // Expects "ok" of the steps before the failed one, "not tried" of those after it.
    static Report examine(const dovcommon::Transport& transport) {
        std::ostringstream out, err;
        TestWaiter waiter;
        dovctl::Dovctl dovctl({out}, {err}, waiter, transport);
        Report report{.code = dovctl.run({"doctor", "--json", "--timeout", patience()}),
                      .failed = {}};
        EXPECT_EQ(err.str(), "");
        Json::Value steps;
        std::istringstream(out.str()) >> steps;
        for (const Json::Value& step : steps) {
            if (step["state"] == "failed") {
                report.failed = step["step"].asString() + ": " + step["finding"].asString();
                EXPECT_NE(step["advice"], "") << "a failed step must give advice";
            } else {
                EXPECT_EQ(step["state"], report.failed.empty() ? "ok" : "not tried") << step;
            }
        }
        return report;
    }
    static Report examine() {
        if (overDriver()) return examine(dovcommon::transport());
        return examine({.sockets = true, .place = folder(), .problem = {}});
    }
};

TEST_F(DoctorTest, firstFailedStepIsNamedWithItsCause) {
    struct Case {
        std::function<void()> arrange;
        std::string failure;
        int code;
    };
    static const std::string fragment = folder() + "/malformed.xml";
    const std::string undeclared =
            "declared: no VINTF manifest declares " + std::string(kServiceName);
    const std::string version = std::to_string(IMirx::version);
    const std::vector<Case> cases = {
            {[] { undeclare(); }, undeclared, 3},
            {[] { std::ofstream(fragment) << "<manifest>"; },
             undeclared + (overDriver() ? "" : "; " + fragment + ": "), 3},
            {[] { std::filesystem::remove(fragment), declare(), stopServing(); },
             "running: it is declared, but no process has registered it", 3},
            {[] { serveAsItIs(serviceOfAnotherInterface()); },
             "running: what is registered is another interface", 3},
            {[] {
                 serveAsItIs(serviceOf({IMirx::version, "notfrozen"}));
             },
             "interface: version " + version + ", hash notfrozen; this client has version " +
                     version + ", hash " + IMirx::hash,
             1},
            {[] {
                 serveAsItIs(serviceOf({IMirx::version - 1, IMirx::hash}));
             },
             "interface: version 0", 1},
            {[] {
                 serveAsItIs(serviceOf({IMirx::version + 1, "later"}));
             },
             "init: init failed: ", 1},  // a later version is accepted, but it has no operations
            {[this] { serve(); },
             std::string("callbacks: the service held, but did not call back within ") +
                     patience() + " ms",
             1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.failure);
        c.arrange();
        const Report report = examine();
        EXPECT_THAT(report.failed, testing::StartsWith(c.failure));
        EXPECT_EQ(report.code, c.code);
    }
}

TEST_F(DoctorTest, missingDriverFailsTheTransportStep) {
    const dovcommon::Transport driver = dovcommon::transport();
    EXPECT_FALSE(driver.sockets) << "no other transport is linked into this program";
    if (driver.problem.empty()) GTEST_SKIP() << "this machine has a binder driver";
    EXPECT_EQ(examine(driver).failed, "transport: /dev/binder: No such file or directory");
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
