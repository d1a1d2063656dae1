// Tests of the action names and their look-up.
#include <dov/DovWrapper.h>

#include <algorithm>
#include <map>

#include <gmock/gmock.h>

#include "tests/support/allocations.h"
#include "wrapper/action_index.h"

using dovwrapper::findAction;

// The service depends on the names and their order, so they must not change. The hash is FNV-1a of
// all names, each followed by a line feed.
TEST(ActionTest, namesAndTheirOrderAreUnchanged) {
    ASSERT_EQ(gActionList.size(), 199u);
    uint64_t hash = 0xcbf29ce484222325;
    for (const std::string& name : gActionList) {
        for (const char c : name + "\n") hash = (hash ^ static_cast<uint8_t>(c)) * 0x100000001b3;
    }
    EXPECT_EQ(hash, 0x5c61a96b848a6668);
}

TEST(ActionTest, everyNameMapsToItsFirstId) {
    std::map<size_t, size_t> unreachable;
    for (size_t id = 0; id < gActionList.size(); ++id) {
        const auto first = static_cast<size_t>(
                std::find(gActionList.begin(), gActionList.end(), gActionList[id]) -
                gActionList.begin());
        EXPECT_EQ(findAction("VANTEL_" + gActionList[id]), first) << gActionList[id];
        if (first != id) unreachable[id] = first;
    }
    EXPECT_THAT(unreachable,
                testing::ElementsAre(std::pair(106, 91), std::pair(107, 92), std::pair(108, 93),
                                     std::pair(109, 94), std::pair(162, 102)));
}

TEST(ActionTest, knownNamesMapToTheirIds) {
    EXPECT_EQ(findAction("VANTEL_ACTION_LAUNCH"), 0);
    EXPECT_EQ(findAction("VANTEL_ACTION_KALTERVINE_DDR_BOOST"), 36);
    EXPECT_EQ(findAction("VANTEL_ACTION_CAMERA_STIKER_RECORD"), 78);
    EXPECT_EQ(findAction("VANTEL_ACTION_CAMERA_APS_CAPTURE_L1"), 91);
    EXPECT_EQ(findAction("VANTEL_ACTION_CAMERA_MULTI_SCENE"), 102);
    EXPECT_EQ(findAction("VANTEL_ACTION_CAMERA_PREVIEW_PORTAIT"), 120);
    EXPECT_EQ(findAction("VANTEL_ACTION_TERVOS_GAME_BG"), 173);
    EXPECT_EQ(findAction("VANTEL_ACTION_CAMERA_APS_INNER_THDR_CAPTURE_L1"), 198);
}

TEST(ActionTest, similarNamesAreNotFound) {
    for (const std::string& name : gActionList) {
        const std::string lastChanged = name.substr(0, name.size() - 1) + "?";
        for (const std::string& eventId :
             {name, "XVANTEL_" + name, "VANTEL" + name, "vantel_" + name, "VANTEL_ " + name,
              "VANTEL_" + name + " ", "VANTEL_VANTEL_" + name, "XXXXXXX" + name,
              "XXXXXXX" + name + "VANTEL_", "VANTEL_" + name.substr(1), "VANTEL_" + lastChanged,
              "VANTEL_" + name + std::string(1, '\0')}) {
            EXPECT_EQ(findAction(eventId), std::nullopt) << eventId;
        }
    }
    for (const std::string eventId : {"", "VANTEL_", "VANTEL", "VANTEL_ACTION_",
                                      "VANTEL_action_launch", "VANTEL_ACTION_NONE"}) {
        EXPECT_EQ(findAction(eventId), std::nullopt) << eventId;
    }
    EXPECT_EQ(findAction("VANTEL_" + std::string(100000, 'A')), std::nullopt);
}

TEST(ActionTest, lookUpDoesNotAllocate) {
    for (const std::string& name : gActionList) {
        const std::string eventId = "VANTEL_" + name;
        const std::string nearMiss = eventId + "_";
        EXPECT_EQ(allocationsOf([&] {
                      findAction(eventId);
                      findAction(nearMiss);
                  }),
                  0u);
    }
}
