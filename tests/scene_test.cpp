// Tests of the wrapper's entry points: actions and scenes.
#include <dov/DovWrapper.h>
#include <dov/dov.h>

#include <gmock/gmock.h>

#include "tests/support/data.h"
#include "tests/support/shown.h"
#include "tests/support/test_services.h"

using testing::ElementsAre;

namespace {

LogLine wrapper(const std::string& text) {
    return {ANDROID_LOG_INFO, "[DOV_CLIENT_WRAPPER]", text};
}
LogLine client(const std::string& text) {
    return {ANDROID_LOG_INFO, "[DOV_CLIENT]", text};
}

}  // namespace

using SceneTest = BinderTest;

TEST_F(SceneTest, actionIsSentAsItsId) {
    service->answer = 1000;
    EXPECT_EQ(DovEventAcquireWrapper("VANTEL_" + gActionList[91], "", "", -9), 1000);
    EXPECT_EQ(shown(service->take().at(0)),
              "request type 8 duration -9 package '' identity '' {5b}");
    EXPECT_THAT(log.take(),
                ElementsAre(wrapper("[DovEventAcquireWrapper] eventId:VANTEL_" + gActionList[91] +
                                    ", scene:none, identity:none, timeout:-9"),
                            client("DovEventAcquire, cmdid:91, pkg:none, identity:none")));
    services().declarationChecks = 0;
    for (const std::string eventId : {"", "ACTION_LAUNCH", "VANTEL_", "XVANTEL_ACTION_LAUNCH"}) {
        EXPECT_EQ(DovEventAcquireWrapper(eventId, "", "", 5), -1);
        EXPECT_THAT(log.take(), ElementsAre(wrapper("[DovEventAcquireWrapper] eventId:" +
                                                    (eventId.empty() ? "none" : eventId) +
                                                    ", scene:none, identity:none, timeout:5")));
    }
    EXPECT_THAT(service->take(), testing::IsEmpty());
    EXPECT_EQ(services().declarationChecks, 0);
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
            {9, 1, 1, "", "9 1 {10112f0 'enable 0'}{1011910 '0'}"},
            {9, 0, 1, "", "9 0"},
            {14, 0, 5, "x", "14 0 {1011040 '-1'}{1011040 ''}"},
            {14, 1, 5, "x", "14 1 {1011040 '5'}{10115b0 'x'}"},
            {14, 1, 0, "x", "14 1 {10115b0 'x'}"},
            {14, 1, 0, "", "14 1"},
            {15, -1, 2, "", "15 767"},
            {15, 0, 2, "", "15 512"},
            {15, 1, -1, "", "15 -255"},
            {15, 0, 0x01800000, "", "15 -2147483648"},
            {102, 1, 0, "", "102 1 {1011070 '3'}"},
            {102, 1, -1, "", "102 1 {1011070 '3'}"},
            {102, 1, 7, "", "102 1 {1011070 '7'}"},
            {102, 1, INT32_MIN, "", "102 1 {1011070 '-2147483648'}"},
            {102, 0, 7, "", "102 0 {1011070 '0'}"},
            {111, -1, 7, "", "111 -1 {10103a0 '-1'}"},
            {111, 1, 7, "", "111 1 {10103a0 '1'}"},
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
        for (const RecordedCall& call : service->take()) sent += shown(call);
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
        expectSent({src, 1, 1, "", ""});
    }
    // The types that a scene does not have.
    const std::vector<std::pair<int32_t, std::vector<int32_t>>> others = {
            {8, {-1, 3}},   {9, {-1, 2}},   {14, {-1, 2}},  {15, {-2, 2}},   {102, {-1, 2}},
            {111, {-2, 2}}, {130, {-1, 2}}, {131, {-1, 2}}, {9000, {-1, 2}},
    };
    for (const auto& [src, types] : others) {
        for (const int32_t type : types) expectSent({src, type, 5, "colocation:1,a-1", ""});
    }
    for (const int32_t unknown : {INT32_MIN, -1, 0, 4, 7, 13, 17, 101, 132, 8999, 65536 + 1}) {
        expectSent({unknown, 1, 1, "1,2", ""});
    }
    log.take();
    EXPECT_EQ(DovNotifyWapper("", 4, -2, 0, 0, 0, ""), 0);
    EXPECT_THAT(log.take(), ElementsAre(wrapper("[DovNotifyWapper] none, src:4, type:-2")));
}

TEST_F(SceneTest, gameUpgradeIsClearedForAnyRule) {
    clrGameUpgradeMode(-4, 9);
    EXPECT_EQ(shown(service->take().at(0)), "ruleCtl -4 9 {1011040 '-1'}{1011040 ''}");
}
