// Tests of every operation: what it sends, logs and returns in each state of the service.
#include <dov/dov.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <climits>
#include <set>
#include <tuple>

#include <android-base/strings.h>

#include "tests/support/client_test.h"
#include "tests/support/holdings.h"
#include "tests/support/operations.h"

using namespace mirxHalclient;
using DovClient::Resource;
using testing::IsEmpty;
using namespace std::string_literals;

namespace {

constexpr int kN = 5;  // the number that the table's texts are about

enum State : char { kUndeclared = 'u', kFailing = 'f', kServing = 's', kEmpty = 'e' };

bool isClients(const Operation& operation) {
    return std::string_view(operation.name).starts_with("mirx");
}

// The operation's log in this state. An empty answer is no failed call.
std::string logIn(State state, const Operation& operation) {
    const bool client = isClients(operation);
    const std::string log = operation.log ? operation.log : "I mirx client "s + operation.name;
    std::string failed = operation.name;
    std::vector<std::string> lines;
    // Adds the lines with this mark.
    const auto add = [&](char mark) {
        for (const std::string& line : android::base::Split(log, "\n")) {
            if (line.starts_with("f ")) {
                failed = line.substr(2);
            } else if (line.starts_with(mark)) {
                lines.push_back(line.substr(1));
            }
        }
    };
    for (const std::string& line : android::base::Split(log, "\n")) {
        if (line.starts_with("I ") || line.starts_with("E ")) lines.push_back(line);
    }
    if (state == kUndeclared) {
        lines.emplace_back("E Mirx is not declared, AServiceManager_isDeclared:0");
        if (!client) lines.emplace_back("E dov_get_mirx_hal_and_link_to_death error:-1");
    } else {
        add('b');
    }
    if (state == kFailing) {
        lines.push_back("E " + failed + (client ? "() failed: " : "() failed : ") +
                        "mirx HAL service not available");
    }
    add(state == kEmpty ? kFailing : state);
    return android::base::Join(lines, '\n');
}

}  // namespace

class OperationsTest : public ClientTest {
  protected:
    OperationsTest() { answerThree(); }

    // Calls the operation and checks its log.
    std::string call(const Operation& operation, State state) {
        log.take();
        std::string outcome = operation.call(kN);
        EXPECT_EQ(log.text(isClients(operation) ? kClientTag : kDovTag), logIn(state, operation));
        return outcome;
    }
};

TEST_F(OperationsTest, stateOfTheServiceDecidesTheOutcome) {
    for (const Operation& operation : operations()) {
        SCOPED_TRACE(operation.name);
        const bool oneWay = operation.reply == Reply::kOneWay;
        const std::string sent = operation.sent;
        const bool leaves =
                operation.service == std::string("request") && sent.ends_with("callback");
        const size_t waiting = waitingCallbacks();
        service->failing = true;
        mirx_init();  // empties the binding
        dovInit();
        service->take();
        undeclare();
        const char* unbound = operation.unbound ? operation.unbound : operation.failed;
        EXPECT_EQ(call(operation, kUndeclared), unbound);
        EXPECT_THAT(service->take(), IsEmpty());
        EXPECT_EQ(waitingCallbacks(), waiting) << "a callback was left without a service";
        declare();
        if (!oneWay) {
            EXPECT_EQ(call(operation, kFailing), operation.failed);
            EXPECT_EQ(waitingCallbacks(), waiting + (leaves ? 1 : 0));
        }
        service->failing = false;
        services().declarationChecks = 0;
        service->take();
        EXPECT_EQ(call(operation, kServing), operation.result) << "the failed call left an entry";
        EXPECT_EQ(services().declarationChecks, 1) << "the proxy was not dropped";
        EXPECT_EQ(waitingCallbacks(), waiting + (leaves ? 2 : 0));
        RecordedCall received = oneWay ? service->awaitCall() : theCall();
        if (oneWay) received.parcel.handle = received.parcel.pid = 0;  // differ from call to call
        EXPECT_EQ(shown(received), operation.service + (sent.empty() ? "" : " " + sent));
        EXPECT_THAT(service->take(), IsEmpty());
        endRegistration();
    }
}

TEST_F(OperationsTest, anyNumberIsAValidAnswer) {
    for (const int32_t answer : {INT32_MIN, -1, 0, 1, INT32_MAX}) {
        service->answer = answer;
        for (const Operation& operation : operations()) {
            if (operation.reply != Reply::kNumber) continue;
            SCOPED_TRACE(operation.name);
            const std::string result = operation.result;
            const std::string accepted = isClients(operation) && answer < 1 ? "-1" : result;
            EXPECT_EQ(call(operation, kServing), result == "3" ? std::to_string(answer) : accepted);
            service->take();
            mirxResListeningUnRegister(answer);
        }
    }
}

TEST_F(OperationsTest, emptyStateIsAFailureThatKeepsTheProxy) {
    service->state = {};
    mirx_init();
    ASSERT_EQ(dovInit(), 0);
    services().declarationChecks = 0;
    for (const Operation& operation : operations()) {
        if (operation.reply != Reply::kData) continue;
        SCOPED_TRACE(operation.name);
        EXPECT_EQ(call(operation, kEmpty), operation.failed);
    }
    EXPECT_EQ(services().declarationChecks, 0);
}

TEST_F(OperationsTest, argumentsDetermineTheParcel) {
    std::list<Resource> list = {{0x1010010, "7"}, {0, {}}, {-1, "x"}},
                        watched = {{5, {}}, {0, "x"}};
    const std::vector<Resource> resources = {{7, "1"}, {0x20, {}}, {-1, ""}};
    std::vector<std::string> texts;
    const auto heard = std::make_shared<Heard>();
    const std::string ofList = "pid 34 {1010010 '7'}{0 ''}{ffffffff 'x'}";
    const std::string ofResources = "{7 '1'}{20}{ffffffff ''}";
    const std::string longest = std::to_string(LONG_MAX);
    const std::string added = "request type 1 handle -1 duration 9 arg4 ";
    const std::string changed = "request type 1 handle 5 duration -1 arg4 ";
    // What the call that returned `result` has sent.
    const auto sentBy = [this](int /*result*/) { return shown(theCall()); };
    EXPECT_EQ(sentBy(mirxResCtlRequest(9, list, 34)), added + "-1 " + ofList);
    EXPECT_EQ(sentBy(mirxResCtlRequest(9, list, 7, 34)), added + "-1 flag " + ofList);
    EXPECT_EQ(sentBy(mirxResCtlRequest(9, list, 8, 1, 34)), added + "8 flag " + ofList);
    EXPECT_EQ(sentBy(mirxResCtlRequest(5, -1, list, 7, 34)), changed + "-1 flag " + ofList);
    EXPECT_EQ(sentBy(mirxResCtlRequest(5, -1, list, 8, -1, 34)), changed + "8 " + ofList);
    EXPECT_EQ(sentBy(mirxSACtlRequest(9, 7, 34)),
              "request type 2 handle -1 duration 9 arg4 -1 pid 34 {7}");
    EXPECT_EQ(sentBy(mirxSACtlRequest(3, -1, -7, 4, 1, -5, heard)),
              "request type 2 handle 3 duration -1 arg4 4 flag pid -5 {fffffff9} callback");
    EXPECT_EQ(sentBy(mirxResListeningRegister(watched, 9, heard)),
              "listeningRegister pid 9 {5 ''}{0 'x'} callback");
    EXPECT_EQ(sentBy(mirxThermalListeningRegister({1, -2}, heard)),
              "thermalListeningRegister 1 -2 callback");
    EXPECT_EQ(sentBy(mirxThermalNotify(list, 34)), "request type 7 " + ofList);
    EXPECT_EQ(sentBy(mirx_resctl_request_by_path(6, LONG_MAX, {"/b", "/a"}, {"2", ""}, 3, 7, 4)),
              "request type 1 handle 6 duration " + longest +
                      " arg4 3 flag pid 4 tags zdbdebug {0 '2' path '/b'}{0 '' path '/a'}");
    EXPECT_EQ(sentBy(mirx_res_state_request_by_path({"/b", "/a"}, {"1", ""}, 9, texts)),
              "stateRequest pid 9 tags zdbdebug {0 '1' path '/b'}{0 '' path '/a'}");
    EXPECT_EQ(sentBy(mirx_res_state_request_by_path({"/b", "/a"}, {"1"}, 9, texts)),
              "stateRequest pid 9 tags zdbdebug {0 path '/b'}{0 path '/a'}");
    EXPECT_EQ(sentBy(mirx_res_listening_register_map_by_path({{"/b", "2"}, {"/a", ""}}, 9, heard)),
              "listeningRegister pid 9 tags zdbdebug {0 '' path '/a'}{0 '2' path '/b'} callback");
    EXPECT_EQ(sentBy(mirxPropertySet("key", "a value")), "propertySet 'key' 'a value'");
    EXPECT_EQ(sentBy(DovEventAcquire(4, "com.example", "me", 2000, resources)),
              "request type 8 duration 2000 package 'com.example' identity 'me' {4}" + ofResources);
    EXPECT_EQ(
            sentBy(DovEventAcquire(-2, "com.example", "", INT32_MIN, resources)),
            "request type 1 duration -2147483648 package 'com.example' identity '' " + ofResources);
    EXPECT_EQ(sentBy(DovResAcquire(resources, "ignored", "me", -1)),
              "request type 1 duration -1 package '' identity 'me' " + ofResources);
    EXPECT_EQ(sentBy(DovPlatformResAcquire(resources, "ignored", "me", "com.example", 9)),
              "request type 12 duration 9 package 'com.example' identity 'me' " + ofResources);
    EXPECT_EQ(sentBy(DovNotify(-3, INT32_MAX, {})), "request type 10 {fffffffd arg 2147483647}");
    EXPECT_EQ(sentBy(dovRuleCtl(200, -5, resources)), "ruleCtl 200 -5 " + ofResources);
    mirxResListeningUnRegister(3);
    MirxRequestParcel tagged;
    tagged.stringList = {{"a", std::nullopt, "b"}};
    mirx_add_zdbdebug_for_request_parcel(tagged);
    EXPECT_EQ(shown(RecordedCall{.parcel = tagged}), " tags zdbdebug");
}

TEST_F(OperationsTest, invalidListsAreRefusedOnceBound) {
    using Texts = std::vector<std::string>;
    using Lists = std::tuple<std::list<Resource>, Texts, Texts>;
    std::list<Resource> list;
    Texts paths, values;
    const auto heard = std::make_shared<Heard>();
    const auto refusal = [this](int result) {
        EXPECT_EQ(result, -1);
        return log.text(kClientTag);
    };
    for (const Lists& invalid : {Lists{{{0, "1"}}, {"/a"}, {}}, Lists{{{5, ""}}, {}, {"1"}},
                                 Lists{{{5, {}}}, {"/a"}, {"1", "2"}},
                                 Lists{{{5, "1"}, {0, ""}, {6, ""}}, {"/a", "/b"}, {"1"}}}) {
        std::tie(list, paths, values) = invalid;
        EXPECT_FALSE(checkResourceList(list));
        EXPECT_EQ(refusal(mirxResCtlRequest(1, list, 2)),
                  "I mirx client mirxResCtlRequest\n"
                  "E mirxResCtlRequest ERROR: size unmatched for id and value ");
        EXPECT_EQ(refusal(mirxResCtlRequest(-1, 1, list, 0, 0, 2, heard)),
                  "I mirx client mirxResCtlRequest with callback\n"
                  "E mirx client mirx_resctl_request ERROR: size unmatched for id and value ");
        EXPECT_EQ(refusal(mirxThermalNotify(list, 2)),
                  "I mirx client mirxThermalNotify\n"
                  "E mirxThermalNotify ERROR: size unmatched for id and level ");
        EXPECT_EQ(refusal(mirx_resctl_request_by_path(1, 1, paths, values, 0, 0, 2)),
                  "I mirx client mirx_resctl_request\n"
                  "E mirx_resctl_request ERROR: size unmatched for paths and value ");
        EXPECT_EQ(refusal(mirx_resctl_request_with_callback_by_path(1, 1, paths, values, 0, 0, 2,
                                                                    heard)),
                  "I mirx client mirx_resctl_request_with_callback\n"
                  "E mirx client mirx_resctl_request ERROR: size unmatched for id and value ");
    }
    EXPECT_THAT(service->take(), IsEmpty());
    EXPECT_EQ(waitingCallbacks(), 0u);
    for (std::list<Resource> valid :
         std::vector<std::list<Resource>>{{}, {{0, {}}}, {{-5, "1"}, {0, ""}, {6, "2"}}}) {
        EXPECT_TRUE(checkResourceList(valid)) << shown(valid);
    }
    service->failing = true;
    mirx_init();
    undeclare();
    log.take();
    EXPECT_EQ(refusal(mirxResCtlRequest(1, list, 2)),
              "I mirx client mirxResCtlRequest\n"
              "E Mirx is not declared, AServiceManager_isDeclared:0");
}

// The notice of the service's death arrives after the failed calls.
TEST_F(OperationsTest, callsToADeadServiceFail) {
    HeldBackDeath death;
    ASSERT_EQ(mirxResCtlRelease(1), 3);
    const int32_t handle = DovEventAcquireOneWay(4, "", "", -5, {{7, "1"}, {8, {}}});
    EXPECT_GE(handle, 0);
    EXPECT_EQ(log.text(kDovTag),
              "I MIRXFramework-lib-vendor: mirx client mirxResCtlRelease\n"
              "I DovEventAcquireOneWay, cmdid:4, pkg:none, identity:none\n"
              "D DovEventAcquireOneWay res_Id:7 ,res_Value:1, \n"
              "D DovEventAcquireOneWay res_Id:8 ,res_Value:, ");
    service->awaitCall();
    EXPECT_EQ(shown(service->awaitCall()), "oneWayRequest type 8 handle " + std::to_string(handle) +
                                                   " duration -5 pid " + std::to_string(getpid()) +
                                                   " package '' identity '' {4}{7 '1'}{8}");
    stopServing();
    EXPECT_EQ(mirxResCtlRelease(1), -1);  // waits for the end of the connection, unlike the next
    log.take();
    const int32_t lost = DovEventAcquireOneWay(1, "p", "i", 0, {});
    EXPECT_GE(lost, 0) << "the caller owns the handle of a failed call";
    EXPECT_EQ(log.text(kDovTag),
              "I DovEventAcquireOneWay, cmdid:1, pkg:p, identity:i\n"
              "E DovEventAcquireOneWay() failed : mirx HAL service not available\n"
              "E mirxResCtlRequest error:" +
                      std::to_string(lost));
    serve();
    EXPECT_EQ(mirxResCtlRelease(1), 3);
}

TEST_F(OperationsTest, randomHandlesArePositiveAndDiffer) {
    std::set<int32_t> handles;
    const Holdings before;
    for (int i = 0; i < 1000; ++i) handles.insert(dovGetRandomHandle());
    EXPECT_LT(Holdings().descriptors, before.descriptors + 100);  // connections come and go
    EXPECT_GE(*handles.begin(), 0);
    EXPECT_GT(handles.size(), 990u);
    EXPECT_GT(*handles.rbegin(), 0x40000000) << "the upper bits are never set";
}

TEST_F(OperationsTest, oneWayRequestNeedsNoRandomDevice) {
    ASSERT_EQ(dovInit(), 0);
    log.take();
    service->take();
    rlimit limit = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const int next = dup(0);
    close(next);
    const rlimit full = {.rlim_cur = static_cast<rlim_t>(next), .rlim_max = limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &full), 0);
    EXPECT_EQ(DovEventAcquireOneWay(1, "p", "i", 0, {}), -1);
    setrlimit(RLIMIT_NOFILE, &limit);
    EXPECT_EQ(log.text(kDovTag),
              "I DovEventAcquireOneWay, cmdid:1, pkg:p, identity:i\n"
              "E dovClient open /dev/urandom failed: fd(-1) \n");
    EXPECT_EQ(service->awaitCall().parcel.handle, -1);
}
