// Tests of the wrapper's entry points: acquire, release and notify.
#include <dov/DovWrapper.h>
#include <dov/dov.h>

#include <gmock/gmock.h>

#include "tests/support/data.h"
#include "tests/support/shown.h"
#include "tests/support/test_services.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

LogLine wrapper(const std::string& text) {
    return {ANDROID_LOG_INFO, "[DOV_CLIENT_WRAPPER]", text};
}
LogLine client(const std::string& text) {
    return {ANDROID_LOG_INFO, "[DOV_CLIENT]", text};
}

// The rule, its status and its resources.
std::string textOf(const RecordedCall& call) {
    const std::string resources = shown(call.data);
    return call.operation + " " + std::to_string(call.numbers.at(0)) + " " +
           std::to_string(call.numbers.at(1)) + (resources.empty() ? "" : " ") + resources;
}

}  // namespace

using ActionAcquireTest = BinderTest;
using SceneTest = BinderTest;

TEST_F(ActionAcquireTest, actionIsSentAsItsId) {
    service->answer = 1000;
    EXPECT_EQ(DovEventAcquireWrapper("VANTEL_" + gActionList[91], "scene", "me", -9), 1000);
    MirxRequestParcel expected;
    expected.requestType = 8;
    expected.packageName = "scene";
    expected.identity = "me";
    expected.duration = -9;
    expected.requestData = {element(91)};
    EXPECT_EQ(service->take().at(0).parcel.toString(), expected.toString());
}

TEST_F(ActionAcquireTest, unknownActionsAreLoggedButNotSent) {
    for (const std::string eventId : {"", "ACTION_LAUNCH", "VANTEL_", "XVANTEL_ACTION_LAUNCH"}) {
        EXPECT_EQ(DovEventAcquireWrapper(eventId, "", "", 5), -1);
        EXPECT_THAT(log.take(), ElementsAre(wrapper("[DovEventAcquireWrapper] eventId:" +
                                                    (eventId.empty() ? "none" : eventId) +
                                                    ", scene:none, identity:none, timeout:5")));
    }
    EXPECT_THAT(service->take(), IsEmpty());
    EXPECT_EQ(services().declarationChecks, 0);
}

TEST_F(ActionAcquireTest, emptyTextsAreLoggedAsNoneAndSentEmpty) {
    EXPECT_EQ(DovEventAcquireWrapper("VANTEL_ACTION_LAUNCH", "", "", 0), 1);
    DovReleaseWapper(INT32_MIN);
    EXPECT_THAT(log.take(),
                ElementsAre(wrapper("[DovEventAcquireWrapper] eventId:VANTEL_ACTION_LAUNCH, "
                                    "scene:none, identity:none, timeout:0"),
                            client("DovEventAcquire, cmdid:0, pkg:none, identity:none"),
                            wrapper("[DovReleaseWapper] -2147483648"),
                            client("DovRelease, handle:-2147483648")));
    const auto calls = service->take();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].parcel.packageName, "");
    EXPECT_EQ(calls[0].parcel.identity, "");
    EXPECT_EQ(calls[1].operation, "release");
    EXPECT_THAT(calls[1].numbers, ElementsAre(INT32_MIN));
}

TEST_F(SceneTest, everySceneSendsItsRule) {
    struct Scene {
        int32_t src, type, level;
        std::string data;
        std::string sent;  // the rule, its status and its resources; empty: nothing
    };
    const std::vector<Scene> scenes = {
            {8, 1, 1, "x", "8 1 {10103a0 '0'}"},
            {8, 2, 1, "", "8 2 {10103a0 '0'}"},
            {8, 1, 0, "", "8 1"},
            {8, 2, 2, "", "8 2"},
            {8, 0, 1, "", "8 0"},
            {8, 3, 1, "", ""},
            {8, -1, 1, "", ""},
            {9, 1, 1, "", "9 1 {10112f0 'enable 0'}{1011910 '0'}"},
            {9, 0, 1, "", "9 0"},
            {9, 2, 1, "", ""},
            {9, -1, 1, "", ""},
            {14, 0, 5, "x", "14 0 {1011040 '-1'}{1011040 ''}"},
            {14, 1, 5, "x", "14 1 {1011040 '5'}{10115b0 'x'}"},
            {14, 1, 0, "x", "14 1 {10115b0 'x'}"},
            {14, 1, 0, "", "14 1"},
            {14, 2, 5, "x", ""},
            {14, -1, 5, "x", ""},
            {15, -1, 2, "", "15 767"},
            {15, 0, 2, "", "15 512"},
            {15, 1, -1, "", "15 -255"},
            {15, 0, 0x01800000, "", "15 -2147483648"},
            {15, 2, 2, "", ""},
            {15, -2, 2, "", ""},
            {102, 1, 0, "", "102 1 {1011070 '3'}"},
            {102, 1, -1, "", "102 1 {1011070 '3'}"},
            {102, 1, 7, "", "102 1 {1011070 '7'}"},
            {102, 1, INT32_MIN, "", "102 1 {1011070 '-2147483648'}"},
            {102, 0, 7, "", "102 0 {1011070 '0'}"},
            {102, 2, 7, "", ""},
            {102, -1, 7, "", ""},
            {111, -1, 7, "", "111 -1 {10103a0 '-1'}"},
            {111, 1, 7, "", "111 1 {10103a0 '1'}"},
            {111, 2, 7, "", ""},
            {111, -2, 7, "", ""},
            {130, 1, 0, "a-1,b-2", "130 1 {10108a0 '1'}{10108b0 '2'}"},
            {130, 1, 0, ",", "130 1"},
            {131, 1, 0, "colocation:1", "131 1 {1011040 '1'}"},
            {131, 1, 0, "nothing", "131 1"},
            {9000, 1, 0, "1, 2", "9000 1 {1010b10 '1'}{1010b20 '2'}"},
            {9000, 1, 0, "1", "9000 1"},
    };
    const auto expectSent = [this](const Scene& scene) {
        SCOPED_TRACE(std::to_string(scene.src) + " " + std::to_string(scene.type) + " " +
                     std::to_string(scene.level) + " " + scene.data);
        service->answer = -1;  // not returned to the caller
        EXPECT_EQ(DovNotifyWapper("n", scene.src, scene.type, scene.level, 77, 88, scene.data), 0);
        std::string sent;
        for (const RecordedCall& call : service->take()) sent += textOf(call);
        EXPECT_EQ(sent, scene.sent.empty() ? "" : "ruleCtl " + scene.sent);
    };
    for (const Scene& scene : scenes) expectSent(scene);
    for (const int32_t src : {1, 10, 11, 12, 16, 110, 129, 1000}) {
        expectSent({src, INT32_MIN, 1, "1,2", std::to_string(src) + " -2147483648"});
    }
    for (const int32_t src : {2, 3, 5, 6}) {
        expectSent({src, 2, 1, "1,2", "200 0"});
        expectSent({src, 1, 1, "1,2", "200 " + std::to_string(src)});
    }
    for (const int32_t src : {130, 131, 9000}) {
        expectSent({src, 0, 1, "1,2", std::to_string(src) + " 0"});
        for (const int32_t type : {1, 2, -1}) expectSent({src, type, 1, type == 1 ? "" : "1", ""});
    }
    for (const int32_t unknown : {INT32_MIN, -1, 0, 4, 7, 13, 17, 101, 132, 8999, 65536 + 1}) {
        expectSent({unknown, 1, 1, "1,2", ""});
    }
}

TEST_F(SceneTest, sceneIsLoggedAndFailuresAreNotReturned) {
    EXPECT_EQ(DovNotifyWapper("", 4, -2, 0, 0, 0, ""), 0);
    service->failing = true;
    EXPECT_EQ(DovNotifyWapper("game", 1, 1, 0, 0, 0, ""), 0);
    EXPECT_THAT(log.take(),
                ElementsAre(wrapper("[DovNotifyWapper] none, src:4, type:-2"),
                            wrapper("[DovNotifyWapper] game, src:1, type:1"),
                            client("dovRuleCtl, ruleId:1, status:1"),
                            LogLine{ANDROID_LOG_ERROR, "[DOV_CLIENT]",
                                    "dovRuleCtl() failed : mirx HAL service not available"}));
}

TEST_F(SceneTest, gameUpgradeIsClearedForAnyRule) {
    clrGameUpgradeMode(-4, 9);
    EXPECT_EQ(textOf(service->take().at(0)), "ruleCtl -4 9 {1011040 '-1'}{1011040 ''}");
}
