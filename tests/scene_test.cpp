// Tests of the wrapper's entry points: acquire, release and notify.
#include <dov/DovWrapper.h>
#include <dov/dov.h>

#include <set>

#include <android/binder_manager.h>
#include <gmock/gmock.h>

#include <aidl/vendor/tavro/hardware/mirx/IMirx.h>

#include "tests/support/shown.h"
#include "tests/support/test_services.h"

using aidl::vendor::tavro::hardware::mirx::IMirx;
using DovClient::Resource;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

LogLine info(const std::string& text) {
    return {ANDROID_LOG_INFO, "[DOV_CLIENT_WRAPPER]", text};
}

constexpr int32_t kFlag = 0x010103a0;
constexpr int32_t kLevel = 0x01011070;
constexpr int32_t kUpgrade = 0x01011040;

struct Rule {
    int32_t ruleId;
    int32_t status;
    std::vector<Resource> resources = {};
};

struct Scene {
    int32_t src;
    int32_t type;
    int32_t level;
    std::string data;
    std::optional<Rule> sent;
};

}  // namespace

class ActionAcquireTest : public BinderTest {};
class SceneTest : public BinderTest {
  protected:
    void expectSent(const Scene& scene) {
        SCOPED_TRACE("src " + std::to_string(scene.src) + " type " + std::to_string(scene.type) +
                     " level " + std::to_string(scene.level) + " data " + scene.data);
        service->answer = -1;  // not returned to the caller
        EXPECT_EQ(DovNotifyWapper("n", scene.src, scene.type, scene.level, 77, 88, scene.data), 0);
        const auto calls = service->take();
        ASSERT_EQ(calls.size(), scene.sent ? 1u : 0u);
        if (!scene.sent) return;
        EXPECT_EQ(calls[0].operation, "ruleCtl");
        EXPECT_THAT(calls[0].numbers, ElementsAre(scene.sent->ruleId, scene.sent->status));
        EXPECT_EQ(shown(calls[0].data), shown(scene.sent->resources));
    }
};

TEST_F(ActionAcquireTest, everyActionSendsItsId) {
    for (size_t id = 0; id < gActionList.size(); ++id) {
        service->answer = static_cast<int32_t>(1000 + id);
        EXPECT_EQ(DovEventAcquireWrapper("VANTEL_" + gActionList[id], "scene", "me", -9),
                  static_cast<int32_t>(1000 + id));
        const auto calls = service->take();
        ASSERT_EQ(calls.size(), 1u);
        MirxRequestParcel expected;
        expected.requestType = 8;
        expected.packageName = "scene";
        expected.identity = "me";
        expected.duration = -9;
        expected.requestData.resize(1);
        expected.requestData[0].id = static_cast<int32_t>(
                std::find(gActionList.begin(), gActionList.end(), gActionList[id]) -
                gActionList.begin());
        EXPECT_EQ(calls[0].parcel.toString(), expected.toString());
    }
}

TEST_F(ActionAcquireTest, unknownActionsAreNotSent) {
    for (const std::string eventId : {"", "ACTION_LAUNCH", "VANTEL_", "XVANTEL_ACTION_LAUNCH"}) {
        EXPECT_EQ(DovEventAcquireWrapper(eventId, "", "", 5), -1);
        EXPECT_THAT(log.take(), ElementsAre(info("[DovEventAcquireWrapper] eventId:" +
                                                 (eventId.empty() ? "none" : eventId) +
                                                 ", scene:none, identity:none, timeout:5")));
    }
    EXPECT_THAT(service->take(), IsEmpty());
    EXPECT_EQ(services().declarationChecks, 0);
}

TEST_F(ActionAcquireTest, emptyTextsAreLoggedAsNoneAndSentEmpty) {
    EXPECT_EQ(DovEventAcquireWrapper("VANTEL_ACTION_LAUNCH", "", "", 0), 1);
    EXPECT_THAT(log.take(),
                ElementsAre(info("[DovEventAcquireWrapper] eventId:VANTEL_ACTION_LAUNCH, "
                                 "scene:none, identity:none, timeout:0"),
                            LogLine{ANDROID_LOG_INFO, "[DOV_CLIENT]",
                                    "DovEventAcquire, cmdid:0, pkg:none, identity:none"}));
    const auto calls = service->take();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].parcel.packageName, "");
    EXPECT_EQ(calls[0].parcel.identity, "");
}

TEST_F(ActionAcquireTest, releaseSendsTheHandle) {
    for (const int32_t handle : {7, 0, -1, INT32_MIN}) {
        DovReleaseWapper(handle);
        EXPECT_THAT(log.take(),
                    ElementsAre(info("[DovReleaseWapper] " + std::to_string(handle)),
                                LogLine{ANDROID_LOG_INFO, "[DOV_CLIENT]",
                                        "DovRelease, handle:" + std::to_string(handle)}));
        const auto calls = service->take();
        ASSERT_EQ(calls.size(), 1u);
        EXPECT_EQ(calls[0].operation, "release");
        EXPECT_THAT(calls[0].numbers, ElementsAre(handle));
    }
}

TEST_F(SceneTest, everySceneSendsItsRule) {
    const std::vector<Scene> scenes = {
            {8, 1, 1, "x", Rule{8, 1, {{kFlag, "0"}}}},
            {8, 2, 1, "", Rule{8, 2, {{kFlag, "0"}}}},
            {8, 1, 0, "", Rule{8, 1}},
            {8, 2, 2, "", Rule{8, 2}},
            {8, 0, 1, "", Rule{8, 0}},
            {8, 3, 1, "", {}},
            {8, -1, 1, "", {}},

            {9, 1, 1, "", Rule{9, 1, {{0x010112f0, "enable 0"}, {0x01011910, "0"}}}},
            {9, 0, 1, "", Rule{9, 0}},
            {9, 2, 1, "", {}},
            {9, -1, 1, "", {}},

            {14, 0, 5, "x", Rule{14, 0, {{kUpgrade, "-1"}, {kUpgrade, ""}}}},
            {14, 1, 5, "x", Rule{14, 1, {{kUpgrade, "5"}, {0x010115b0, "x"}}}},
            {14, 1, 0, "x", Rule{14, 1, {{0x010115b0, "x"}}}},
            {14, 1, 0, "", Rule{14, 1}},
            {14, 2, 5, "x", {}},
            {14, -1, 5, "x", {}},

            {15, -1, 2, "", Rule{15, 0x2ff}},
            {15, 0, 2, "", Rule{15, 0x200}},
            {15, 1, 0, "", Rule{15, 1}},
            {15, 1, -1, "", Rule{15, -255}},
            {15, 0, 0x01800000, "", Rule{15, INT32_MIN}},
            {15, 2, 2, "", {}},
            {15, -2, 2, "", {}},

            {102, 1, 0, "", Rule{102, 1, {{kLevel, "3"}}}},
            {102, 1, -1, "", Rule{102, 1, {{kLevel, "3"}}}},
            {102, 1, 7, "", Rule{102, 1, {{kLevel, "7"}}}},
            {102, 1, -2, "", Rule{102, 1, {{kLevel, "-2"}}}},
            {102, 1, INT32_MIN, "", Rule{102, 1, {{kLevel, "-2147483648"}}}},
            {102, 0, 7, "", Rule{102, 0, {{kLevel, "0"}}}},
            {102, 2, 7, "", {}},
            {102, -1, 7, "", {}},

            {111, -1, 7, "", Rule{111, -1, {{kFlag, "-1"}}}},
            {111, 0, 7, "", Rule{111, 0, {{kFlag, "0"}}}},
            {111, 1, 7, "", Rule{111, 1, {{kFlag, "1"}}}},
            {111, 2, 7, "", {}},
            {111, -2, 7, "", {}},

            {130, 1, 0, "a-1,b-2", Rule{130, 1, {{0x010108a0, "1"}, {0x010108b0, "2"}}}},
            {130, 1, 0, ",", Rule{130, 1}},
            {131, 1, 0, "colocation:1", Rule{131, 1, {{kUpgrade, "1"}}}},
            {131, 1, 0, "nothing", Rule{131, 1}},
            {9000, 1, 0, "1, 2", Rule{9000, 1, {{0x01010b10, "1"}, {0x01010b20, "2"}}}},
            {9000, 1, 0, "1", Rule{9000, 1}},
    };
    for (const Scene& scene : scenes) expectSent(scene);

    for (const int32_t src : {1, 10, 11, 12, 16, 110, 129, 1000}) {
        for (const int32_t type : {INT32_MIN, -1, 0, 1, 2, INT32_MAX}) {
            expectSent({src, type, 1, "1,2", Rule{src, type}});
        }
    }
    for (const int32_t src : {2, 3, 5, 6}) {
        for (const int32_t type : {INT32_MIN, -1, 0, 2, INT32_MAX}) {
            expectSent({src, type, 1, "1,2", Rule{200, 0}});
        }
        expectSent({src, 1, 1, "1,2", Rule{200, src}});
    }
    for (const int32_t src : {130, 131, 9000}) {
        expectSent({src, 0, 1, "1,2", Rule{src, 0}});
        expectSent({src, 1, 1, "", {}});
        expectSent({src, 2, 1, "1,2", {}});
        expectSent({src, -1, 1, "1,2", {}});
    }
}

TEST_F(SceneTest, unknownScenesSendNothing) {
    const std::set<int32_t> known = {1,  2,  3,   5,   6,   8,   9,   10,  11,   12,  14,
                                     15, 16, 102, 110, 111, 129, 130, 131, 1000, 9000};
    std::vector<int32_t> others = {INT32_MIN, INT32_MAX, 8999, 9001, 65536 + 1};
    for (int32_t src = -300; src < 1100; ++src) {
        if (!known.contains(src)) others.push_back(src);
    }
    for (const int32_t src : others) {
        for (const int32_t type : {-1, 0, 1, 2}) expectSent({src, type, 1, "1,2", {}});
    }
    EXPECT_EQ(services().declarationChecks, 0);
}

TEST_F(SceneTest, sceneIsLoggedAndFailuresAreNotReturned) {
    EXPECT_EQ(DovNotifyWapper("", 4, -2, 0, 0, 0, ""), 0);
    EXPECT_THAT(log.take(), ElementsAre(info("[DovNotifyWapper] none, src:4, type:-2")));
    service->failing = true;
    EXPECT_EQ(DovNotifyWapper("game", 1, 1, 0, 0, 0, ""), 0);
    EXPECT_THAT(
            log.take(),
            ElementsAre(info("[DovNotifyWapper] game, src:1, type:1"),
                        LogLine{ANDROID_LOG_INFO, "[DOV_CLIENT]", "dovRuleCtl, ruleId:1, status:1"},
                        LogLine{ANDROID_LOG_ERROR, "[DOV_CLIENT]",
                                "dovRuleCtl() failed : mirx HAL service not available"}));
}

TEST_F(SceneTest, gameUpgradeIsClearedForAnyRule) {
    clrGameUpgradeMode(-4, 9);
    const auto calls = service->take();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_THAT(calls[0].numbers, ElementsAre(-4, 9));
    EXPECT_EQ(shown(calls[0].data), "{1011040 '-1'}{1011040 ''}");
}
