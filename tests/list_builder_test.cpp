// Tests of the list builders and of the opcode tables that they use.
#include <dov/DovWrapper.h>

#include <dlfcn.h>
#include <link.h>

#include <gmock/gmock.h>

#include "tests/support/shown.h"

using DovClient::Resource;
using testing::ElementsAre;

namespace {

struct Case {
    std::string data;
    std::vector<Resource> list;
};

// The opcodes of all tables, in the order of their addresses.
const std::vector<int32_t> kOpcodes = {0x010108a0, 0x010108b0, 0x010108c0, 0x01010b10, 0x01010b20,
                                       0x01010b30, 0x01020070, 0x01010b90, 0x01010ba0, 0x01010bb0,
                                       0x01020080, 0x01010010, 0x01010020, 0x01010030, 0x01020050,
                                       0x010100a0, 0x010100b0, 0x010100c0, 0x01020060};

// "0", "1", ... joined with `separator`.
std::string numbers(size_t count, const std::string& separator) {
    std::string text;
    for (size_t i = 0; i < count; ++i) text += (i == 0 ? "" : separator) + std::to_string(i);
    return text;
}

// Resources with the values "0", "1", ... and the opcodes from position `first` to the last one.
std::vector<Resource> numbered(size_t first, size_t count) {
    std::vector<Resource> list;
    for (size_t i = 0; i < count && first + i < kOpcodes.size(); ++i) {
        list.push_back({kOpcodes[first + i], std::to_string(i)});
    }
    return list;
}

}  // namespace

TEST(OpcodeTableTest, tablesAreContiguous) {
    EXPECT_THAT(opCodeTargetLoad, ElementsAre(0x010108a0, 0x010108b0, 0x010108c0));
    EXPECT_THAT(opCodeAdpXpuCoreBoost, ElementsAre(0x01010b10, 0x01010b20, 0x01010b30, 0x01020070));
    EXPECT_THAT(opCodeAdpXpuCoreLimit, ElementsAre(0x01010b90, 0x01010ba0, 0x01010bb0, 0x01020080));
    EXPECT_THAT(opCodeAdpXpuFreqBoost, ElementsAre(0x01010010, 0x01010020, 0x01010030, 0x01020050));
    EXPECT_THAT(opCodeAdpXpuFreqLimit, ElementsAre(0x010100a0, 0x010100b0, 0x010100c0, 0x01020060));
    EXPECT_EQ(&opCodeAdpXpuCoreBoost[0] - &opCodeTargetLoad[0], 3);
    EXPECT_EQ(&opCodeAdpXpuCoreLimit[0] - &opCodeTargetLoad[0], 7);
    EXPECT_EQ(&opCodeAdpXpuFreqBoost[0] - &opCodeTargetLoad[0], 11);
    EXPECT_EQ(&opCodeAdpXpuFreqLimit[0] - &opCodeTargetLoad[0], 15);
}

#ifdef __GLIBC__
TEST(OpcodeTableTest, eachTableIsASymbolOfItsOwnSize) {
    const std::vector<std::pair<const char*, size_t>> tables = {{"opCodeTargetLoad", 3},
                                                                {"opCodeAdpXpuCoreBoost", 4},
                                                                {"opCodeAdpXpuCoreLimit", 4},
                                                                {"opCodeAdpXpuFreqBoost", 4},
                                                                {"opCodeAdpXpuFreqLimit", 4}};
    for (const auto& [name, length] : tables) {
        SCOPED_TRACE(name);
        void* const address = dlsym(RTLD_DEFAULT, name);
        ASSERT_NE(address, nullptr);
        Dl_info info = {};
        void* found = nullptr;
        ASSERT_NE(dladdr1(address, &info, &found, RTLD_DL_SYMENT), 0);
        const auto* symbol = static_cast<const ElfW(Sym)*>(found);
        EXPECT_STREQ(info.dli_sname, name);
        EXPECT_EQ(symbol->st_size, length * sizeof(int32_t));
        EXPECT_EQ(symbol->st_info, (STB_GLOBAL << 4) | STT_OBJECT);
    }
}
#endif

TEST(ListBuilderTest, resourceInfoAlwaysHasAValue) {
    EXPECT_THAT(shown({DovResourceInfo(-1, "x")}), ElementsAre("ffffffff 'x'"));
    EXPECT_THAT(shown({DovResourceInfo(0, "")}), ElementsAre("00000000 ''"));
}

TEST(ListBuilderTest, targetLoadBecomesResources) {
    const std::vector<Case> cases = {
            {"", {}},
            {",,", {}},
            {"1000,2000,3000", {{0x010108a0, "1000"}, {0x010108b0, "2000"}, {0x010108c0, "3000"}}},
            {"1,2,3,4",
             {{0x010108a0, "1"}, {0x010108b0, "2"}, {0x010108c0, "3"}, {0x01010b10, "4"}}},
            {",,5", {{0x010108a0, "5"}}},
            {" 1 ,x:y", {{0x010108a0, " 1 "}, {0x010108b0, "x:y"}}},
            {"a-1,b-2", {{0x010108a0, "1"}, {0x010108b0, "2"}}},
            {"x-1,y,z-3", {{0x010108a0, "1"}, {0x010108c0, "3"}}},
            {"a--1-2,-3,4-", {{0x010108a0, "1"}}},
            {"-1", {}},
            {"-", {}},
            {numbers(18, ","), numbered(0, 18)},
            {numbers(19, ","), numbered(0, 19)},
            {numbers(20, ","), numbered(0, 19)},
            {numbers(5000, ","), numbered(0, 19)},
            {"x-" + numbers(25, ",x-"), numbered(0, 19)},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(shown(getTargetLoadList(c.data)), shown(c.list)) << c.data;
    }
}

TEST(ListBuilderTest, colocationBecomesResources) {
    const std::vector<Case> cases = {
            {"", {}},
            {"colocation", {}},
            {"colocation:", {}},
            {":1", {}},
            {"Colocation:1", {}},
            {" colocation:1", {}},
            {"colocation:1", {{0x01011040, "1"}}},
            {"colocation:: 1 :2", {{0x01011040, " 1 "}}},
            {"colocation:-1", {{0x01011040, "-1"}}},
            {"other:1,colocation:2,colocation:3", {{0x01011040, "2"}, {0x01011040, "3"}}},
            {"groupmigrate:6-2", {{0x01010fb0, "6"}, {0x01010fc0, "2"}}},
            {"groupmigrate:2-6", {}},
            {"groupmigrate:3-3", {}},
            {"groupmigrate:6", {}},
            {"groupmigrate:6-", {}},
            {"groupmigrate:-6-2-9", {{0x01010fb0, "6"}, {0x01010fc0, "2"}}},
            {"groupmigrate:07-x", {{0x01010fb0, "7"}, {0x01010fc0, "0"}}},
            {"groupmigrate:x-0", {}},
            {"groupmigrate:2147483648-0", {}},
            {"groupmigrate:2147483647- 1x", {{0x01010fb0, "2147483647"}, {0x01010fc0, "1"}}},
            {"colocation:1,groupmigrate:6-2,,colocation:x",
             {{0x01011040, "1"}, {0x01010fb0, "6"}, {0x01010fc0, "2"}, {0x01011040, "x"}}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(shown(getColocationList(c.data)), shown(c.list)) << c.data;
    }
}

TEST(ListBuilderTest, gameAdaptationBecomesResources) {
    const std::vector<Case> cases = {
            {"", {}},
            {";;", {}},
            {"5", {}},
            {",", {}},
            {"1,2;3,4",
             {{0x01010b10, "1"}, {0x01010b20, "2"}, {0x01010b90, "3"}, {0x01010ba0, "4"}}},
            {"5;1,2", {{0x01010b90, "1"}, {0x01010ba0, "2"}}},
            {";;1,2", {{0x01010b10, "1"}, {0x01010b20, "2"}}},
            {"5,", {{0x01010b10, "5"}}},
            {" 1 ,\t2", {{0x01010b10, "1"}, {0x01010b20, "2"}}},
            {"1, \r\n,3", {{0x01010b10, "1"}, {0x01010b20, ""}, {0x01010b30, "3"}}},
            {"a,;b,;c,;d,;e,",
             {{0x01010b10, "a"}, {0x01010b90, "b"}, {0x01010010, "c"}, {0x010100a0, "d"}}},
            {numbers(5, ","), numbered(3, 5)},
            {numbers(17, ","), numbered(3, 16)},
            {"x;" + numbers(13, ","), numbered(7, 12)},
            {"x;x;" + numbers(9, ","), numbered(11, 8)},
            {"x;x;x;" + numbers(400, ","), numbered(15, 4)},
            {"x;x;x;x;" + numbers(2, ","), {}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(shown(getGameAdpList(c.data)), shown(c.list)) << c.data;
    }
    std::vector<Resource> first = numbered(3, 16);
    first.push_back({0x01010b90, "z"});
    EXPECT_EQ(shown(getGameAdpList(numbers(20, ",") + ";z,")), shown(first))
            << "the groups after a long one were lost";
}

TEST(ListBuilderTest, gameUpgradeBecomesResources) {
    const auto build = [](int32_t level, const std::string& data) {
        return shown(getGameUpgradeList(7, 7, level, 7, 7, data));
    };
    EXPECT_THAT(build(0, ""), ElementsAre());
    EXPECT_THAT(build(-1, ""), ElementsAre());
    EXPECT_THAT(build(INT32_MAX, ""), ElementsAre("01011040 '2147483647'"));
    EXPECT_THAT(build(0, " x "), ElementsAre("010115b0 ' x '"));
    EXPECT_THAT(build(2, "x"), ElementsAre("01011040 '2'", "010115b0 'x'"));
}
