// Tests of the string utilities.
#include <dov/DovWrapper.h>

#include <gmock/gmock.h>

using namespace stringUtils;

TEST(StringUtilsTest, containsFindsBytesAndTheEmptyText) {
    EXPECT_TRUE(contains("", ""));
    EXPECT_TRUE(contains("abc", ""));
    EXPECT_TRUE(contains("abc", "bc"));
    EXPECT_FALSE(contains("", "a"));
    EXPECT_FALSE(contains("ab", "abc"));
    EXPECT_FALSE(contains("abc", "BC"));
    EXPECT_TRUE(contains(std::string("a\0b", 3), "b"));
}

TEST(StringUtilsTest, equalsComparesEveryByte) {
    EXPECT_TRUE(equals("", ""));
    EXPECT_TRUE(equals("abc", "abc"));
    EXPECT_FALSE(equals("abc", "abc "));
    EXPECT_FALSE(equals("abc", "ABC"));
    EXPECT_FALSE(equals(std::string("a\0b", 3), std::string("a\0c", 3)));
}

TEST(StringUtilsTest, parseIntReadsALeadingNumberOrReturnsZero) {
    const std::vector<std::pair<std::string, int32_t>> cases = {
            {"", 0},
            {"abc", 0},
            {"7", 7},
            {" 7", 7},
            {" \t\n\v\f\r7", 7},
            {"-3", -3},
            {"+3", 3},
            {"+-3", 0},
            {"-+3", 0},
            {"--3", 0},
            {"- 3", 0},
            {"+", 0},
            {"12abc", 12},
            {"12 13", 12},
            {"0x10", 0},
            {"007", 7},
            {"2147483647", 2147483647},
            {"2147483648", 0},
            {"-2147483648", INT32_MIN},
            {"-2147483649", 0},
            {"99999999999", 0},
            {"99999999999999999999999999", 0},
            {"0000000000000000000000000000000001", 1},
            {std::string("1\0002", 3), 1},
            {std::string("\0001", 2), 0},
    };
    for (const auto& [text, number] : cases) {
        EXPECT_EQ(parseInt(text), number) << text;
    }
}

TEST(StringUtilsTest, valueOfReturnsDecimalText) {
    EXPECT_EQ(valueOf(0), "0");
    EXPECT_EQ(valueOf(-1), "-1");
    EXPECT_EQ(valueOf(42), "42");
    EXPECT_EQ(valueOf(INT32_MIN), "-2147483648");
}

TEST(StringUtilsTest, trimRemovesASetOfCharactersFromTheEnds) {
    struct Case {
        std::string text;
        const char* chars;
        std::string left, right, both;
    };
    const std::vector<Case> cases = {
            {" \tx y\r\n", WHITESPACE, "x y\r\n", " \tx y", "x y"},
            {"   ", WHITESPACE, "", "", ""},
            {"", WHITESPACE, "", "", ""},
            {"\fx\v", WHITESPACE, "\fx\v", "\fx\v", "\fx\v"},
            {" x ", "", " x ", " x ", " x "},
            {"", "", "", "", ""},
            {"abxba", "ab", "xba", "abx", "x"},
            {std::string(" \0 ", 3), " ", std::string("\0 ", 2), std::string(" \0", 2),
             std::string("\0", 1)},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(trimLeft(c.text, c.chars), c.left) << c.text;
        EXPECT_EQ(trimRight(c.text, c.chars), c.right) << c.text;
        EXPECT_EQ(trim(c.text, c.chars), c.both) << c.text;
    }
    EXPECT_STREQ(WHITESPACE, " \n\r\t");
}

TEST(StringUtilsTest, splitReturnsNoEmptyPieces) {
    struct Case {
        std::string text, delimiters;
        std::vector<std::string> pieces;
    };
    const std::vector<Case> cases = {
            {",a,,b,", ",", {"a", "b"}},
            {"a-b:c", "-:", {"a", "b", "c"}},
            {"a-:b", "-:", {"a", "b"}},
            {"-:", "-:", {}},
            {",,,", ",", {}},
            {"", ",", {}},
            {"", "", {}},
            {"abc", "", {"abc"}},
            {"abc", ",", {"abc"}},
            {" a , b ", ",", {" a ", " b "}},
            {std::string("a\0b", 3), std::string("\0", 1), {"a", "b"}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(split(c.text, c.delimiters), c.pieces) << c.text << " at " << c.delimiters;
    }
}
