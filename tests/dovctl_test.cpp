// The command line: usage, exit codes, what goes to which stream, and what reaches the service.
#include "dovctl/dovctl.h"

#include <sstream>

#include <gmock/gmock.h>

#include "simulator/describe.h"
#include "tests/support/child_process.h"
#include "tests/support/test_services.h"

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class DovctlTest : public BinderTest {
  protected:
    struct Result {
        int code;
        std::string out, err;
    };

    Result run(const std::vector<std::string>& args) {
        std::ostringstream out, err;
        dovctl::Dovctl dovctl(
                out, err, [this, &out] { atInterrupt(out.str()); }, [] {});
        const int code = dovctl.run(args);
        return {code, out.str(), err.str()};
    }

    // Called when a command waits for Ctrl-C, with what it has printed so far.
    std::function<void(const std::string&)> atInterrupt = [](const std::string&) {
        ADD_FAILURE() << "waits for Ctrl-C";
    };
};

TEST_F(DovctlTest, wrongUsageIsOneClearLineAndTwo) {
    struct Case {
        std::vector<std::string> args;
        std::string message;
    };
    const std::vector<Case> cases = {
            {{"frobnicate"}, "unknown command 'frobnicate'"},
            {{"--frobnicate"}, "--frobnicate"},
            {{"acquire"}, "CMDID"},
            {{"acquire", "one"}, "'one' is not a number"},
            {{"acquire", "1x"}, "'1x' is not a number"},
            {{"acquire", ""}, "'' is not a number"},
            {{"acquire", "0x-1"}, "'0x-1' is not a number"},
            {{"acquire", "2147483648"}, "'2147483648' is not in the range -2147483648..2147483647"},
            {{"acquire", "1", "2"}, "2"},
            {{"acquire", "1", "--duration"}, "--duration"},
            {{"acquire", "1", "--duration", "soon"}, "--duration"},
            {{"acquire", "1", "--duration=99999999999"}, "99999999999"},
            {{"acquire", "1", "--resource", "=7"}, "--resource"},
            {{"acquire", "1", "--resource", "0x100000000=7"}, "0x100000000"},
            {{"acquire", "1", "--resource", "-1=7"}, "-1"},
            {{"acquire", "1", "--hold=yes"}, "--hold"},
            {{"res-acquire"}, "--resource"},
            {{"platform-acquire", "--package", "p"}, "--resource"},
            {{"release"}, "HANDLE"},
            {{"release", "1", "x"}, "'x' is not a number"},
    };
    for (const Case& c : cases) {
        const Result result = run(c.args);
        EXPECT_EQ(result.code, 2) << testing::PrintToString(c.args);
        EXPECT_THAT(result.out, IsEmpty());
        EXPECT_THAT(result.err,
                    AllOf(StartsWith("dovctl: "), HasSubstr(c.message), HasSubstr("--help")));
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    }
    EXPECT_EQ(run({}).code, 2);
    EXPECT_THAT(service->take(), IsEmpty()) << "nothing is sent when the usage is wrong";
}

TEST_F(DovctlTest, helpIsThereOnEveryLevel) {
    const Result program = run({"--help"});
    EXPECT_EQ(program.code, 0);
    for (const char* command : {"init", "acquire", "res-acquire", "platform-acquire", "release"}) {
        EXPECT_THAT(program.out, HasSubstr(command));
        for (const auto& args : {std::vector<std::string>{command, "--help"}, {"help", command}}) {
            const Result help = run(args);
            EXPECT_EQ(help.code, 0);
            EXPECT_THAT(help.out, StartsWith(std::string("Usage: dovctl ") + command));
            EXPECT_THAT(help.err, IsEmpty());
        }
    }
    EXPECT_EQ(run({"help", "frobnicate"}).code, 2);
}

TEST_F(DovctlTest, commandsSendWhatTheirOptionsSay) {
    service->answer = 42;
    struct Case {
        std::vector<std::string> args;
        std::string request;
    };
    const std::vector<Case> cases = {
            {{"acquire", "-7"},
             "event acquire (8) package=\"\" identity=\"dovctl\" data=[{id=-7}]"},
            {{"acquire", "--duration", "-5", "0x10", "--package", "p", "--identity", "i",
              "--resource", "0xF0000001=a=b", "--resource", "16", "--resource", "17="},
             "event acquire (8) duration=-5 package=\"p\" identity=\"i\" "
             "data=[{id=16} {id=0xf0000001 value=\"a=b\"} {id=16} {id=17 value=\"\"}]"},
            {{"res-acquire", "--resource", "1=2", "--duration=3"},
             "resource control (1) duration=3 package=\"\" identity=\"dovctl\" data=[{id=1 "
             "value=\"2\"}]"},
            {{"platform-acquire", "--package=p", "--resource", "1=2"},
             "platform control (12) package=\"p\" identity=\"dovctl\" data=[{id=1 value=\"2\"}]"},
    };
    for (const Case& c : cases) {
        const Result result = run(c.args);
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_EQ(result.out, "42\n");
        EXPECT_THAT(result.err, IsEmpty());
        const auto calls = service->take();
        ASSERT_EQ(calls.size(), 1u);
        EXPECT_EQ(simulator::describe(calls[0].parcel), c.request);
    }
}

TEST_F(DovctlTest, oneWayPrintsTheHandleThatWasSent) {
    const Result result = run({"acquire", "3", "--one-way"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.out, std::to_string(service->awaitCall().parcel.handle) + "\n");
}

TEST_F(DovctlTest, releaseTakesNegativeHandlesAndSeveral) {
    EXPECT_EQ(run({"release", "-1", "5"}).code, 0);
    const auto calls = service->take();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_THAT(calls[0].numbers, ElementsAre(-1));
    EXPECT_THAT(calls[1].numbers, ElementsAre(5));
}

TEST_F(DovctlTest, holdReleasesWhatItAcquiredAfterCtrlC) {
    service->answer = 9;
    bool waited = false;
    atInterrupt = [&](const std::string& printed) {
        waited = true;
        EXPECT_EQ(printed, "9\n") << "a script must have the handle while the hold lasts";
        EXPECT_EQ(service->take().size(), 1u);
    };
    EXPECT_EQ(run({"acquire", "1", "--hold"}).code, 0);
    EXPECT_TRUE(waited);
    const auto calls = service->take();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].operation, "release");
    EXPECT_THAT(calls[0].numbers, ElementsAre(9));
}

TEST_F(DovctlTest, refusalAbsenceAndUndeclaredServiceAreToldApart) {
    service->answer = -1;
    Result result = run({"acquire", "1"});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.err, HasSubstr("refused"));
    service->failing = true;
    EXPECT_EQ(run({"init"}).code, 1);

    services().removeService(android::String16(kServiceName));
    for (const auto& args :
         {std::vector<std::string>{"init"}, {"acquire", "1"}, {"release", "1"}}) {
        result = run(args);
        EXPECT_EQ(result.code, 3);
        EXPECT_THAT(result.err, HasSubstr("declared but not running"));
        EXPECT_THAT(result.out, IsEmpty());
    }
    undeclare();
    result = run({"acquire", "1", "--one-way"});
    EXPECT_EQ(result.code, 3);
    EXPECT_THAT(result.err, HasSubstr("is not declared"));
}

TEST_F(DovctlTest, theLibrarysLogIsShownOnRequestOnly) {
    EXPECT_THAT(run({"acquire", "1"}).err, IsEmpty());
    const std::string line = "I [DOV_CLIENT] DovEventAcquire, cmdid:1, pkg:none, identity:dovctl\n";
    EXPECT_EQ(run({"-v", "acquire", "1"}).err, line);
    EXPECT_EQ(run({"acquire", "1", "-v"}).err, line);
    undeclare();
    service->failing = true;
    run({"init"});
    EXPECT_THAT(run({"init", "-v"}).err,
                HasSubstr("E [DOV_CLIENT] Mirx is not declared, AServiceManager_isDeclared:0\n"));
}

// The program itself, with real signals.
TEST_F(DovctlTest, ctrlCReleasesAHold) {
    ChildProcess program(DOVCTL, {"acquire", "1", "--hold"});
    EXPECT_EQ(program.readUntil(""), "1");
    program.signal(SIGINT);
    EXPECT_EQ(program.wait(), 0);
    const auto calls = service->take();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[1].operation, "release");
}
