// Tests of the wrapper's pure functions: action names, opcode tables, list builders and texts.
#include <dov/DovWrapper.h>

#include <algorithm>

#include <gmock/gmock.h>

#include "tests/support/shown.h"
#include "wrapper/action_index.h"

using DovClient::Resource;
using dovwrapper::findAction;

namespace {

// The opcodes of all tables, in the order of their addresses.
constexpr int32_t kOpcodes[] = {0x010108a0, 0x010108b0, 0x010108c0, 0x01010b10, 0x01010b20,
                                0x01010b30, 0x01020070, 0x01010b90, 0x01010ba0, 0x01010bb0,
                                0x01020080, 0x01010010, 0x01010020, 0x01010030, 0x01020050,
                                0x010100a0, 0x010100b0, 0x010100c0, 0x01020060};

// "0", "1", ... joined with `separator`.
std::string numbers(size_t count, const std::string& separator) {
    std::string text = "0";
    for (size_t i = 1; i < count; ++i) text += separator + std::to_string(i);
    return text;
}

// Resources with the values "0", "1", ... and all opcodes from position `first`.
std::string numbered(size_t first) {
    std::string text;
    for (size_t i = first; i < std::size(kOpcodes); ++i) {
        text += shown(Resource{kOpcodes[i], std::to_string(i - first)});
    }
    return text;
}

struct Case {
    std::string data, list;
};

}  // namespace

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
    std::vector<size_t> unreachable;
    for (size_t id = 0; id < gActionList.size(); ++id) {
        const std::string& name = gActionList[id];
        const auto first =
                std::find(gActionList.begin(), gActionList.end(), name) - gActionList.begin();
        EXPECT_EQ(findAction("VANTEL_" + name), first) << name;
        if (static_cast<size_t>(first) != id) unreachable.push_back(id);
    }
    EXPECT_THAT(unreachable, testing::ElementsAre(106, 107, 108, 109, 162));
    EXPECT_EQ(findAction("VANTEL_ACTION_LAUNCH"), 0);
    EXPECT_EQ(findAction("VANTEL_ACTION_CAMERA_APS_INNER_THDR_CAPTURE_L1"), 198);
}

TEST(ActionTest, similarNamesAreNotFound) {
    for (const std::string& name : gActionList) {
        for (const std::string& eventId :
             {name, "XVANTEL_" + name, "vantel_" + name, "VANTEL_" + name + " ", "XXXXXXX" + name,
              "VANTEL_" + name.substr(1), "VANTEL_" + name.substr(0, name.size() - 1) + "?",
              "VANTEL_" + name + std::string(1, '\0')}) {
            EXPECT_EQ(findAction(eventId), std::nullopt) << eventId;
        }
    }
    for (const std::string eventId : {"", "VANTEL_", "VANTEL_ACTION_NONE"}) {
        EXPECT_EQ(findAction(eventId), std::nullopt) << eventId;
    }
}

TEST(OpcodeTableTest, tablesFollowEachOther) {
    const int32_t* const all = opCodeTargetLoad;
    EXPECT_TRUE(std::equal(std::begin(kOpcodes), std::end(kOpcodes), all));
    EXPECT_EQ(opCodeAdpXpuCoreBoost - all, 3);
    EXPECT_EQ(opCodeAdpXpuCoreLimit - all, 7);
    EXPECT_EQ(opCodeAdpXpuFreqBoost - all, 11);
    EXPECT_EQ(opCodeAdpXpuFreqLimit - all, 15);
}

TEST(ListBuilderTest, targetLoadBecomesResources) {
    const Case cases[] = {
            {"1,2,3,4", "{10108a0 '1'}{10108b0 '2'}{10108c0 '3'}{1010b10 '4'}"},
            {",,5", "{10108a0 '5'}"},
            {" 1 ,x:y", "{10108a0 ' 1 '}{10108b0 'x:y'}"},
            {"x-1,y,z-3", "{10108a0 '1'}{10108c0 '3'}"},
            {"a--1-2,-3,4-", "{10108a0 '1'}"},
            {"-,,", ""},
            {numbers(20, ","), numbered(0)},
            {"x-" + numbers(25, ",x-"), numbered(0)},
    };
    for (const auto& [data, list] : cases) EXPECT_EQ(shown(getTargetLoadList(data)), list) << data;
}

TEST(ListBuilderTest, colocationBecomesResources) {
    const Case cases[] = {
            {"colocation:,:1,Colocation:1, colocation:1", ""},
            {"colocation:: 1 :2", "{1011040 ' 1 '}"},
            {"other:1,colocation:-2,colocation:3", "{1011040 '-2'}{1011040 '3'}"},
            {"groupmigrate:2-6,groupmigrate:3-3,groupmigrate:6-", ""},
            {"groupmigrate:-6-2-9", "{1010fb0 '6'}{1010fc0 '2'}"},
            {"groupmigrate:07-x", "{1010fb0 '7'}{1010fc0 '0'}"},
            {"groupmigrate:2147483648-0", ""},
            {"colocation:1,groupmigrate:6-2,,colocation:x",
             "{1011040 '1'}{1010fb0 '6'}{1010fc0 '2'}{1011040 'x'}"},
    };
    for (const auto& [data, list] : cases) EXPECT_EQ(shown(getColocationList(data)), list) << data;
}

TEST(ListBuilderTest, gameAdaptationBecomesResources) {
    const Case cases[] = {
            {"", ""},
            {",", ""},
            {"5;1,2", "{1010b90 '1'}{1010ba0 '2'}"},
            {";;1,2", "{1010b10 '1'}{1010b20 '2'}"},
            {"5,", "{1010b10 '5'}"},
            {" 1 , \r\n,\t3", "{1010b10 '1'}{1010b20 ''}{1010b30 '3'}"},
            {"a,;b,;c,;d,;e,", "{1010b10 'a'}{1010b90 'b'}{1010010 'c'}{10100a0 'd'}"},
            {"x;" + numbers(13, ","), numbered(7)},
            {"x;x;" + numbers(9, ","), numbered(11)},
            {"x;x;x;" + numbers(400, ","), numbered(15)},
            {numbers(20, ",") + ";z,", numbered(3) + "{1010b90 'z'}"},
    };
    for (const auto& [data, list] : cases) EXPECT_EQ(shown(getGameAdpList(data)), list) << data;
}

TEST(ListBuilderTest, gameUpgradeBecomesResources) {
    EXPECT_EQ(shown(getGameUpgradeList(7, 7, 0, 7, 7, "")), "");
    EXPECT_EQ(shown(getGameUpgradeList(7, 7, -1, 7, 7, " x ")), "{10115b0 ' x '}");
    EXPECT_EQ(shown(getGameUpgradeList(7, 7, 1, 7, 7, "x")), "{1011040 '1'}{10115b0 'x'}");
    EXPECT_EQ(shown(DovResourceInfo(-1, "")), "{ffffffff ''}");
}

TEST(StringUtilsTest, parseIntReadsALeadingNumberOrReturnsZero) {
    const std::pair<std::string, int32_t> cases[] = {
            {"", 0},
            {" \t\n\v\f\r7", 7},
            {"+3 4", 3},
            {"+-3", 0},
            {"-+3", 0},
            {"0x10", 0},
            {"2147483647", INT32_MAX},
            {"2147483648", 0},
            {"-2147483648", INT32_MIN},
            {std::string("07\0002", 4), 7},
    };
    for (const auto& [text, number] : cases) EXPECT_EQ(stringUtils::parseInt(text), number) << text;
}

TEST(StringUtilsTest, trimRemovesASetOfCharactersFromTheEnds) {
    using namespace stringUtils;
    EXPECT_EQ(trimLeft(" \tx y\r\n", WHITESPACE), "x y\r\n");
    EXPECT_EQ(trimRight(" \tx y\r\n", WHITESPACE), " \tx y");
    EXPECT_EQ(trim("\n\fx\v ", WHITESPACE), "\fx\v");
    EXPECT_EQ(trim(" \r ", WHITESPACE), "");
    EXPECT_EQ(trim(" x ", ""), " x ");
    EXPECT_EQ(trim("abxba", "ab"), "x");
}

TEST(StringUtilsTest, textsAreBytesAndPiecesNotEmpty) {
    using namespace stringUtils;
    using testing::ElementsAre;
    EXPECT_THAT(split(",a,, b ,", ","), ElementsAre("a", " b "));
    EXPECT_THAT(split("a-:b:c-d", "-:"), ElementsAre("a", "b", "c", "d"));
    EXPECT_THAT(split("abc", ""), ElementsAre("abc"));
    EXPECT_THAT(split(std::string("a\0b", 3), std::string(1, '\0')), ElementsAre("a", "b"));
    EXPECT_FALSE(equals(std::string("a\0b", 3), std::string("a\0c", 3)));
    EXPECT_TRUE(contains(std::string("a\0b", 3), "b"));
    EXPECT_EQ(valueOf(INT32_MIN), "-2147483648");
}
