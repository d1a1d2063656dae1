// The command line: usage, exit codes, what goes to which stream, and what reaches the service.
#include "dovctl/dovctl.h"

#include <sstream>

#include <unistd.h>

#include <gmock/gmock.h>
#include <json/json.h>

#include "simulator/describe.h"
#include "tests/support/child_process.h"
#include "tests/support/data.h"
#include "tests/support/test_services.h"
#include "tests/support/test_waiter.h"

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

std::string textOf(const RecordedCall& call) {
    std::string text = call.operation;
    for (const int32_t number : call.numbers) text += " " + std::to_string(number);
    for (size_t i = 0; i < call.texts.size(); ++i) text += (i == 0 ? " " : ", ") + call.texts[i];
    if (call.operation == "ruleCtl") text += " data=" + simulator::describe(call.data);
    if (call.operation == "request" || call.operation == "stateRequest") {
        text += " " + simulator::describe(call.parcel);
    }
    return text;
}

}  // namespace

class DovctlTest : public BinderTest {
  protected:
    struct Result {
        int code;
        std::string out, err;
    };

    Result run(const std::vector<std::string>& args) {
        std::ostringstream out, err;
        TestWaiter waiter([this, &out] { atInterrupt(out.str()); });
        dovctl::Dovctl dovctl({out}, {err}, waiter, {.sockets = true, .place = {}, .problem = {}});
        const int code = dovctl.run(args);
        return {code, out.str(), err.str()};
    }

    // Called when a command waits for Ctrl-C, with what it has printed so far.
    std::function<void(const std::string&)> atInterrupt = [](const std::string&) {
        ADD_FAILURE() << "waits for Ctrl-C";
    };
};

TEST_F(DovctlTest, wrongUsagePrintsOneLineAndExitsWithTwo) {
    struct Case {
        std::vector<std::string> args;
        std::string message;
    };
    const std::vector<Case> cases = {
            {{"frobnicate"}, "unknown command 'frobnicate'"},
            {{"--frobnicate"}, "--frobnicate"},
            {{"acquire"}, "EVENT"},
            {{"acquire", "one"}, "'one' is neither a number nor an action"},
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
            {{"acquire", "ACTION_LUNCH"}, "an action; did you mean ACTION_LAUNCH?"},
            {{"aquire", "1"}, "did you mean acquire?"},
            {{"acquire", "1", "--hodl"}, "did you mean --hold?"},
            {{"res", "0x10"}, "0x00000010 has no value"},
            {{"res", "0=5"}, "0x00000000 takes no value"},
            {{"thermal", "1"}, "0x00000001 has no value"},
            {{"state", "1", "/a"}, "not for both"},
            {{"listen"}, "either --opcode or --path"},
            {{"listen", "--opcode", "1", "--path", "/a"}, "either --opcode or --path"},
            {{"thermal"}, "levels or --listen"},
            {{"path", "/a"}, "'/a' has no value"},
            {{"path", "=1"}, "'=1' has no path"},
            {{"dump", "everything"}, "todo-queue"},
            {{"record", "maybe"}, "unknown 'maybe'"},
            {{"prop", "get", "a", "b"}, "get KEY"},
            {{"prop", "set", "a"}, "set KEY VALUE"},
    };
    for (const Case& c : cases) {
        const Result result = run(c.args);
        EXPECT_EQ(result.code, 2) << testing::PrintToString(c.args);
        EXPECT_THAT(result.out, IsEmpty());
        EXPECT_THAT(result.err, AllOf(StartsWith("dovctl: "), HasSubstr(c.message)));
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    }
    EXPECT_EQ(run({}).code, 2);
    EXPECT_THAT(service->take(), IsEmpty()) << "wrong usage must not send anything";
}

TEST_F(DovctlTest, programAndCommandsPrintHelp) {
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

TEST_F(DovctlTest, optionsDetermineTheRequest) {
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

// `call`: the operation, and its numbers, texts, data list or parcel; empty: nothing is sent.
TEST_F(DovctlTest, everyCommandCallsItsOperation) {
    service->answer = 3;
    service->state = {element(5, "50")};
    service->state[0].path = "/a";
    const std::string pid = std::to_string(getpid());
    struct Case {
        std::vector<std::string> args;
        std::string call;
        std::string out;
    };
    const std::vector<Case> cases = {
            {{"acquire", "vantel_Action_wfd", "--package", "p", "--duration", "5"},
             "request event acquire (8) duration=5 package=\"p\" identity=\"dovctl\" "
             "data=[{id=124}]",
             "3\n"},
            {{"acquire", "ACTION_CAMERA_APS_CAPTURE_L1", "--resource", "1=2"},
             "request event acquire (8) package=\"\" identity=\"dovctl\" data=[{id=91} {id=1 "
             "value=\"2\"}]",
             "3\n"},
            {{"notify", "1", "-2", "7", "-9"},
             "request notification (10) data=[{id=1 arg=-2} {id=1 arg=-2}]",
             ""},
            {{"scene", "9", "1"},
             "ruleCtl 9 1 data=[{id=0x010112f0 value=\"enable 0\"} {id=0x01011910 value=\"0\"}]",
             ""},
            {{"scene", "102", "1", "--level", "7"},
             "ruleCtl 102 1 data=[{id=0x01011070 value=\"7\"}]",
             ""},
            {{"scene", "131", "1", "--data", "colocation:1"},
             "ruleCtl 131 1 data=[{id=0x01011040 value=\"1\"}]",
             ""},
            {{"scene", "4", "1"}, "", ""},
            {{"rule", "7", "2", "--resource", "1=2"},
             "ruleCtl 7 2 data=[{id=1 value=\"2\"}]",
             "3\n"},
            {{"sysinfo", "-1", "2"}, "setRelatedSysInfo -1 2", "3\n"},
            {{"state", "5"},
             "stateRequest state query (0) data=[{id=5}]",
             "opcode      value\n0x00000005  50\n"},
            {{"state", "5", "--json"},
             "stateRequest state query (0) data=[{id=5}]",
             "[{\"opcode\":\"0x00000005\",\"value\":\"50\"}]\n"},
            {{"history"}, "stateRequest history query (11) data=[]", "request\nnone\n"},
            {{"power", "--json"},
             "stateRequest power-consumption query (15) package=\"none\" data=[{id=0x01011670 "
             "value=\"0 1 "
             "35\"} {id=0x01011670 value=\"1 1 35\"} {id=0x01011670 value=\"2 1 35\"}]",
             "{\"power\":50}\n"},
            {{"pm-status", "2"}, "stateRequest power-mode query (13) data=[{id=2}]", "50\n"},
            {{"dataset"},
             "stateRequest dataset fetch (16) data=[]",
             "opcode      value\n0x00000005  50\n"},
            {{"feature", "6"}, "stateRequest feature query (17) data=[{id=6}]", "50\n"},
            {{"res", "1=2", "--duration", "-1", "--flag", "1", "--pid", "9", "--arg4", "4",
              "--handle", "8"},
             "request resource control (1) handle=8 pid=9 duration=-1 arg4=4 flag data=[{id=1 "
             "value=\"2\"}]",
             "3\n"},
            {{"path", "/a=1=2"},
             "request resource control (1) handle=-1 pid=" + pid +
                     " arg4=-1 texts=[\"zdbdebug\"] data=[{id=0 value=\"1=2\" path=\"/a\"}]",
             "3\n"},
            {{"sa", "7"},
             "request scene control (2) handle=-1 pid=" + pid + " arg4=-1 data=[{id=7}]",
             "3\n"},
            {{"release", "5"}, "release 5", ""},
            {{"release", "5", "--event"}, "release 5", ""},
            {{"release", "5", "--scene"}, "release 5", ""},
            {{"state", "5", "--low-level"},
             "stateRequest state query (0) pid=" + pid + " data=[{id=5 value=\"\"}]",
             "opcode      value\n0x00000005  50\n"},
            {{"state", "/a"},
             "stateRequest state query (0) pid=" + pid +
                     " texts=[\"zdbdebug\"] data=[{id=0 value=\"\" path=\"/a\"}]",
             "path  value\n/a    50\n"},
            {{"state", "/a", "--list", "--json"},
             "stateRequest state query (0) pid=" + pid +
                     " texts=[\"zdbdebug\"] data=[{id=0 path=\"/a\"}]",
             "[{\"path\":\"/a\",\"value\":\"50\"}]\n"},
            {{"thermal", "1=3"},
             "request thermal notification (7) pid=" + pid + " data=[{id=1 value=\"3\"}]",
             ""},
            {{"dump", "scenes"}, "request diagnostics (5) arg4=1 data=[{id=5}]", ""},
            {{"record", "off"}, "request diagnostics (5) arg4=1 data=[{id=11}]", ""},
            {{"prop", "set", "a", "b c"}, "propertySet a, b c", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.args));
        const Result result = run(c.args);
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_EQ(result.out, c.out);
        const auto calls = service->take();
        ASSERT_EQ(calls.size(), c.call.empty() ? 0u : 1u);
        if (!c.call.empty()) EXPECT_EQ(textOf(calls[0]), c.call);
    }
}

TEST_F(DovctlTest, eachBadAnswerHasItsOwnMessage) {
    struct Case {
        std::optional<std::string> answer;  // to each query and property
        std::vector<std::string> args;
        int code;
        std::string message;
    };
    const std::string large(60000, 'x');
    const std::vector<Case> cases = {
            {"many", {"power"}, 5, "no number"},
            {"many", {"feature", "1"}, 5, "no number"},
            {"many", {"pm-status", "1"}, 5, "no number"},
            {"9999999999", {"pm-status", "1"}, 5, "does not fit"},
            {"9999999999", {"power"}, 5, "does not fit"},
            {std::nullopt, {"dataset"}, 5, "has no value"},
            {std::nullopt, {"state", "5", "6"}, 4, "no value: 0x00000005, 0x00000006"},
            {std::string(256, 'x'), {"prop", "get", "a"}, 5, "has 256 characters"},
            {"1", {"acquire", "1", "--identity", large}, 6, "too large for sockets"},
            {"1", {"res", "1=" + large}, 6, "too large for sockets"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.message);
        service->state = {element(5, c.answer)};
        service->property = c.answer.value_or("");
        const Result result = run(c.args);
        EXPECT_EQ(result.code, c.code);
        EXPECT_THAT(result.err, HasSubstr(c.message));
    }
    service->state.clear();
    for (const auto& args : {std::vector<std::string>{"state", "5"},
                             {"history"},
                             {"power"},
                             {"pm-status", "1"},
                             {"dataset"},
                             {"feature", "1"},
                             {"state", "/a"}}) {
        EXPECT_EQ(run(args).code, 4) << args[0];
    }
}

TEST_F(DovctlTest, tooLargeMessageIsNotReportedAsDeath) {
    if (overDriver()) GTEST_SKIP() << "the driver carries larger messages";
    service->property =
            service->state.emplace_back(element(5, std::string(60000, 'x'))).value.value();
    // Only the number of values is known before they are sent, not their size.
    std::vector<std::string> notify(5000, "1");
    notify[0] = "notify";
    for (const auto& args : {notify, {"dataset"}, {"top"}, {"prop", "get", "a"}}) {
        const Result result = run(args);
        EXPECT_EQ(result.code, 6) << args[0];
        EXPECT_THAT(result.err, HasSubstr("too large")) << args[0];
    }
}

TEST_F(DovctlTest, actionsMarksDuplicateNamesAsUnreachable) {
    const std::string all = run({"actions"}).out;
    EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 1 + 199);
    Json::Value json;
    std::istringstream(run({"actions", "multi_Scene", "--json"}).out) >> json;
    ASSERT_EQ(json.size(), 2u);
    EXPECT_EQ(json[0]["id"], 102);
    EXPECT_EQ(json[0]["reachable"], true);
    EXPECT_EQ(json[1]["id"], 162);
    EXPECT_EQ(json[1]["reachable"], false);
}

TEST_F(DovctlTest, jsonIsValidForAnyAnswer) {
    const std::string odd = "quote \" back\\slash \n tab\t \x01 \xc3\xa9";
    service->state = {element(1, odd)};
    Json::Value json;
    std::istringstream(run({"dataset", "--json"}).out) >> json;
    EXPECT_EQ(json[0]["value"].asString(), odd);
    service->property = odd;
    std::istringstream(run({"prop", "get", "a", "--json"}).out) >> json;
    EXPECT_EQ(json["a"].asString(), odd);
    EXPECT_THAT(run({"dataset", "--json"}).out, HasSubstr("\xc3\xa9")) << "UTF-8 is not escaped";
    EXPECT_THAT(run({"dataset"}).out, HasSubstr("\\x0a tab\\x09 \\x01 \xc3\xa9"));
}

TEST_F(DovctlTest, listenPrintsChangesUntilCtrlCAndUnregisters) {
    service->answer = 6;
    std::string whileWaiting;
    atInterrupt = [&](const std::string&) {
        const auto calls = service->take();
        ASSERT_EQ(calls.size(), 1u);
        EXPECT_EQ(calls[0].operation, "listeningRegister");
        EXPECT_TRUE(calls[0].callback->onCallback({element(5, "1"), element(6, "2")}).isOk());
    };
    const Result result = run({"listen", "--opcode", "5", "--opcode", "6", "--json"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out,
              "{\"opcode\":\"0x00000005\",\"value\":\"1\"}\n{\"opcode\":\"0x00000006\",\"value\":"
              "\"2\"}\n");
    const auto calls = service->take();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].operation, "listeningUnregister");
    EXPECT_THAT(calls[0].numbers, ElementsAre(6));
}

TEST_F(DovctlTest, oneWayPrintsTheHandleThatWasSent) {
    const Result result = run({"acquire", "3", "--one-way"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.out, std::to_string(service->awaitCall().parcel.handle) + "\n");
}

TEST_F(DovctlTest, releaseAcceptsSeveralAndNegativeHandles) {
    EXPECT_EQ(run({"release", "-1", "5"}).code, 0);
    const auto calls = service->take();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_THAT(calls[0].numbers, ElementsAre(-1));
    EXPECT_THAT(calls[1].numbers, ElementsAre(5));
}

TEST_F(DovctlTest, ctrlCReleasesTheHold) {
    service->answer = 9;
    bool waited = false;
    atInterrupt = [&](const std::string& printed) {
        waited = true;
        EXPECT_EQ(printed, "9\n") << "a script needs the handle while the hold lasts";
        EXPECT_EQ(service->take().size(), 1u);
    };
    EXPECT_EQ(run({"acquire", "1", "--hold"}).code, 0);
    EXPECT_TRUE(waited);
    const auto calls = service->take();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].operation, "release");
    EXPECT_THAT(calls[0].numbers, ElementsAre(9));
}

TEST_F(DovctlTest, refusalAndAbsenceHaveTheirOwnExitCodes) {
    service->answer = -1;
    Result result = run({"acquire", "1"});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.err, HasSubstr("refused"));
    result = run({"release", "5"});
    EXPECT_EQ(result.code, 4);
    EXPECT_THAT(result.err, HasSubstr("handle 5 holds nothing"));
    service->failing = true;
    for (const auto& args : {std::vector<std::string>{"init"}, {"scene", "1", "1"}, {"power"}}) {
        result = run(args);
        EXPECT_EQ(result.code, 1) << args[0];
        EXPECT_THAT(result.err, HasSubstr("reported an error"));
    }

    stopServing();
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

TEST_F(DovctlTest, onlyVerboseShowsTheLibrarysLog) {
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
TEST_F(DovctlTest, everyTerminatingSignalReleasesAHold) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        ChildProcess program(DOVCTL, {"acquire", "1", "--hold"});
        EXPECT_EQ(program.readUntil(""), "1");
        program.signal(signal);
        EXPECT_EQ(program.wait(), 0);
        const auto calls = service->take();
        ASSERT_EQ(calls.size(), 2u);
        EXPECT_EQ(calls[1].operation, "release");
    }
}

TEST_F(DovctlTest, handleThatCannotBePrintedIsReleased) {
    std::ostringstream err;
    std::ostream closed(nullptr);
    TestWaiter waiter;
    EXPECT_EQ(dovctl::Dovctl({closed}, {err}, waiter).run({"acquire", "1"}), 7) << err.str();
    const auto calls = service->take();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[1].operation, "release");
}

// A handle or registration of the dead service must not reach the next one.
TEST_F(DovctlTest, serviceDeathEndsHoldsAndListeners) {
    stopServing();
    auto simulator = startSimulator();
    using Words = std::vector<std::string>;
    const Words hold = {"res", "1=2", "--hold"};
    const Words listen = {"listen", "--opcode", "0x01010010", "--json"};
    const auto again = [](Words words) {
        words.emplace_back("--reconnect");
        return words;
    };
    ChildProcess holds(DOVCTL, hold), holdsAgain(DOVCTL, again(hold)), listens(DOVCTL, listen),
            listensAgain(DOVCTL, again(listen)),
            thermal(DOVCTL, again({"thermal", "--listen", "1"}));
    holds.readUntil("");
    holdsAgain.readUntil("");
    for (int i = 0; i < 3; ++i) simulator->readUntil("listen ");
    simulator->signal(SIGKILL);
    EXPECT_EQ(holds.wait(), 3);
    EXPECT_EQ(listens.wait(), 3);
    simulator = startSimulator();
    holdsAgain.readUntil("");
    for (int i = 0; i < 2; ++i) simulator->readUntil("listen ");
    EXPECT_EQ(run({"res", "0x01010010=5"}).code, 0);
    EXPECT_THAT(listensAgain.readUntil(""), HasSubstr("\"5\""));
    for (ChildProcess* program : {&holdsAgain, &listensAgain, &thermal}) {
        program->signal(SIGINT);
        EXPECT_EQ(program->wait(), 0);
    }
}
