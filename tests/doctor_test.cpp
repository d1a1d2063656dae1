// dovctl doctor: each step fails for a real cause, and the finding names it.
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <latch>
#include <sstream>

#include <android/binder_stability.h>

#include <gmock/gmock.h>
#include <json/json.h>

#include <aidl/vendor/tavro/hardware/mirx/IMirx.h>

#include "common/transport.h"
#include "dovctl/dovctl.h"
#include "simulator/mirx_service.h"
#include "tests/support/child_process.h"
#include "tests/support/test_services.h"
#include "tests/support/test_waiter.h"

using aidl::vendor::tavro::hardware::mirx::IMirx;
using testing::HasSubstr;

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
        Json::Value steps;

        // "step: finding" of the failed step. Expects "ok" of the steps before it, "not tried" of
        // those after it.
        std::string failure() const {
            std::string failed;
            for (const Json::Value& step : steps) {
                if (step["state"] == "failed") {
                    failed = step["step"].asString() + ": " + step["finding"].asString();
                    EXPECT_NE(step["advice"], "") << "a failed step must give advice";
                } else {
                    EXPECT_EQ(step["state"], failed.empty() ? "ok" : "not tried") << step;
                }
            }
            return failed;
        }
    };

    Report examine(const dovcommon::Transport& transport) {
        std::ostringstream out, err;
        TestWaiter waiter;
        dovctl::Dovctl dovctl({out}, {err}, waiter, transport);
        Report report{.code = dovctl.run({"doctor", "--json", "--timeout", "1000"}), .steps = {}};
        EXPECT_EQ(err.str(), "");
        std::istringstream(out.str()) >> report.steps;
        return report;
    }
    Report examine() {
        if (overDriver()) return examine(dovcommon::transport());
        return examine({.sockets = true, .place = folder(), .problem = {}});
    }
    static void endService() { stopServing(); }
};

TEST_F(DoctorTest, firstFailedStepIsNamedWithItsCause) {
    const auto goOn = std::make_shared<std::latch>(1);
    struct Case {
        std::function<void()> arrange;
        std::string failure;
        int code;
    };
    static const std::string fragment = folder() + "/malformed.xml";
    const std::string version = std::to_string(IMirx::version);
    const std::vector<Case> cases = {
            {[] { undeclare(); },
             "declared: no VINTF manifest declares " + std::string(kServiceName), 3},
            {[] { std::ofstream(fragment) << "<manifest>"; },
             "declared: no VINTF manifest declares " + std::string(kServiceName) +
                     (overDriver() ? "" : "; " + fragment + ": "),
             3},
            {[] { std::filesystem::remove(fragment), declare(), endService(); },
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
            {[this] { serve(), service->failing = true; },
             "init: init failed: Status(-5, EX_ILLEGAL_STATE)", 1},
            {[this] { service->failing = false, service->answer = -1; },
             "hold: the service refused to hold", 1},
            {[this] { service->answer = 1; },
             "callbacks: the service held, but did not call back within 1000 ms", 1},
            {[&] { service->whenCalled([goOn](const std::string&) { goOn->wait(); }); },
             "init: no answer within 1000 ms from process ", 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.failure);
        c.arrange();
        const Report report = examine();
        EXPECT_THAT(report.failure(), testing::StartsWith(c.failure));
        EXPECT_EQ(report.code, c.code);
    }
    goOn->count_down();
}

TEST_F(DoctorTest, correctServicePassesEveryStep) {
    std::ostringstream printed;
    simulator::Journal journal{printed};
    serve(ndk::SharedRefBase::make<simulator::MirxService>(journal)->asBinder());
    const Report report = examine();
    EXPECT_EQ(report.failure(), "");
    EXPECT_EQ(report.code, 0);
    EXPECT_EQ(report.steps.size(), 9u);
    EXPECT_THAT(printed.str(), testing::ContainsRegex("ended    handle [0-9]{9}: released"));
    endService();
}

TEST_F(DoctorTest, missingDriverFailsTheTransportStep) {
    const dovcommon::Transport driver = dovcommon::transport();
    EXPECT_FALSE(driver.sockets) << "no other transport is linked into this program";
    if (driver.problem.empty()) GTEST_SKIP() << "this machine has a binder driver";
    EXPECT_EQ(examine(driver).failure(), "transport: /dev/binder: No such file or directory");
}

// The program itself, whose transport depends on what is linked into it.
TEST_F(DoctorTest, unusableFolderFailsTheTransportStep) {
    if (overDriver()) GTEST_SKIP() << "about the folder of sockets";
    setenv("DOV_SERVICE_DIR", "/proc/none/such", 1);
    ChildProcess doctor(DOVCTL, {"doctor"});
    ChildProcess acquire(DOVCTL, {"acquire", "0"});
    ChildProcess simulator(MIRX_SIMULATOR);
    setenv("DOV_SERVICE_DIR", folder().c_str(), 1);
    EXPECT_THAT(doctor.readUntil("failed"),
                testing::EndsWith("transport        /proc/none/such: No such file or directory"));
    EXPECT_THAT(doctor.readUntil("  "), HasSubstr("mkdir -p -m 700 /proc/none/such"));
    EXPECT_EQ(doctor.wait(), 3);
    EXPECT_EQ(acquire.wait(), 3);
    EXPECT_EQ(simulator.wait(), 1);
}

TEST_F(DoctorTest, stoppedServiceDoesNotHangTheDoctor) {
    endService();
    ChildProcess simulator(MIRX_SIMULATOR);
    simulator.readUntil("serving");
    simulator.signal(SIGSTOP);
    ChildProcess doctor(DOVCTL, {"doctor", "--timeout", "1000"});
    const std::string pid = std::to_string(simulator.pid());
    EXPECT_THAT(doctor.readUntil("failed"),
                testing::MatchesRegex(".*no answer within 1000 ms from process " + pid +
                                      " \\((mirx-simulator|qemu-.*)\\), stopped"));
    EXPECT_THAT(doctor.readUntil("  "), HasSubstr("kill -CONT " + pid));
    EXPECT_EQ(doctor.wait(), 3);
    simulator.signal(SIGCONT);
    ChildProcess again(DOVCTL, {"doctor"});
    EXPECT_EQ(again.readUntil("all"), "all is well");
    EXPECT_EQ(again.wait(), 0);
}
