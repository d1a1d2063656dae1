// Tests of how answers are read: what the caller gets, and what is logged of them.
#include <dov/dov.h>

#include <optional>

#include "tests/support/client_test.h"
#include "tests/support/outcome.h"

using namespace mirxHalclient;
using DovClient::Resource;
using testing::ElementsAre;
using testing::Pair;

class AnswersTest : public ClientTest {};

// The query of a mode prints what is wrong with a number. The one of a feature wants one element.
TEST_F(AnswersTest, eachNumberQueryReadsItsAnswer) {
    const std::string invalid = "Invalid argument exception: stoi";
    const std::string outOfRange = "Out of range exception: stoi";
    const struct {
        std::vector<MirxRequestData> state;
        std::string outcome, ofMode, printed;
    } cases[] = {
            {{element(0, " \n-7x")}, "-7", "-7", ""},
            {{element(0, "2147483648")}, "out of range", "-1", outOfRange},
            {{element(0, "x1")}, "no number", "-1", invalid},
            {{element(0)}, "no value", "no value", ""},
            {{element(1, "1"), element(2, "2")}, "1", "1", ""},
            {{element(1), element(2, "2")}, "no value", "no value", ""},
    };
    ASSERT_EQ(dovInit(), 0);
    services().declarationChecks = 0;
    log.take();
    for (const auto& c : cases) {
        SCOPED_TRACE(shown(c.state));
        service->state = c.state;
        EXPECT_EQ(outcome(DovGetPowerConsis), c.outcome);
        std::string value = "kept";
        const std::string thrown = outcome([&] { DovResStateRequest(0x1011670, value); });
        EXPECT_EQ(thrown.empty() ? value : thrown, c.outcome);
        EXPECT_TRUE(thrown.empty() || value == "kept");

        testing::internal::CaptureStdout();
        EXPECT_EQ(outcome([] { return DovGetPMStatus(2); }), c.ofMode);
        const std::string printed = testing::internal::GetCapturedStdout();
        EXPECT_EQ(printed.substr(0, c.printed.size()), c.printed);
        EXPECT_EQ(printed.empty() ? "" : printed.substr(printed.size() - 1),
                  c.printed.empty() ? "" : "\n");

        const bool single = c.state.size() == 1;
        EXPECT_EQ(outcome([] { return DovGetFeatureStatus(3); }), single ? c.outcome : "-1");
        EXPECT_EQ(log.text(kDovTag),
                  std::string("I dov client DovGetPowerConsis\nI dov client DovGetPowerConsis\n"
                              "I dov client DovGetPMStatus\nI dov client hal DovGetPMStatus\n"
                              "I DovGetFeatureStatus enter") +
                          (single ? "" : "\nE failed to get resource value, 2"));
    }
    EXPECT_EQ(services().declarationChecks, 0) << "an unreadable answer dropped the proxy";
}

TEST_F(AnswersTest, resourcesGetTheirFirstValue) {
    const std::string enter = "\nI DovMutiResStateRequest enter";
    const std::string got = "\nD get resource value, opcode 0x000000";
    const std::string unmatched = "\nI not match any opcode in dovcore";
    service->state = {element(0x20, "20"), element(0x30), element(0x30, "late"),
                      element(0x20, "late"), element(0x40, "")};
    const auto outcomeOf = [this](std::vector<Resource> asked) {
        const int32_t result = DovMutiResStateRequest(asked);
        return std::to_string(result) + shown(asked) + "\n" + log.text(kDovTag);
    };
    EXPECT_EQ(outcomeOf({{0x20, {}}, {0x10, "a"}, {0x40, "b"}, {0x20, "c"}}),
              "3{20 '20'}{10 'a'}{40 ''}{20 '20'}" + enter + got + "20, value 20" + unmatched +
                      got + "40, value " + got + "20, value 20");
    EXPECT_EQ(outcomeOf({{0x30, "old"}, {0x30, {}}}), "0{30 'old'}{30}" + enter);
    EXPECT_EQ(outcomeOf({{0x10, "old"}}), "0{10 'old'}" + enter + unmatched);
    EXPECT_EQ(service->take().size(), 3u);
    EXPECT_EQ(outcomeOf({}), "-1" + enter + "\nE input resource is empty, return");
    EXPECT_EQ(service->take().size(), 0u);
    std::string value = "kept";
    for (const int32_t opcode : {0x10, 0x30}) DovResStateRequest(opcode, value);
    EXPECT_EQ(value, "kept");
}

TEST_F(AnswersTest, historyJoinsItsEntries) {
    service->state.assign(3, element(1, "not this"));
    service->state[0].extra = "a;b";
    service->state[2].extra = "";
    std::string history = "old";
    EXPECT_EQ(DovGetHistory(history), 0);
    EXPECT_EQ(history, "start:a;b;none;;end");
    EXPECT_EQ(log.text(kDovTag),
              "I dov client DovGetHistory\nI dov client hal DovGetHistory\n"
              "D get history successful: start:a;b;none;;end");
}

TEST_F(AnswersTest, datasetEndsAtAnEntryWithoutAValue) {
    std::vector<Resource> dataset = {{1, "one"}, {2, {}}};
    service->state = {element(1, "again"), element(-3, "")};
    EXPECT_EQ(Dov_fetch_dataset(dataset), 4);
    service->state = {element(4, "four"), element(5), element(6, "six")};
    EXPECT_THROW(Dov_fetch_dataset(dataset), std::bad_optional_access);
    EXPECT_EQ(shown(dataset), "{1 'one'}{2}{1 'again'}{fffffffd ''}{4 'four'}");
    EXPECT_EQ(log.text(kDovTag), "I Dov_fetch_dataset enter\nI Dov_fetch_dataset enter");
}

TEST_F(AnswersTest, statesAreAppendedOrReplaced) {
    std::list<Resource> asked = {{5, {}}}, resources = {{1, {}}};
    std::vector<std::string> texts = {"kept"};
    std::map<std::string, std::string> map = {{"/a", "kept"}, {"/b", "old"}};
    service->state = {pathElement("/b", "7"), pathElement("/c"), element(5, "8"),
                      pathElement("/d", ""), pathElement("/b", "9")};
    EXPECT_EQ(mirxResStateRequest(asked, 9, resources), 6);
    EXPECT_EQ(mirx_res_state_request_by_path({"/a"}, {}, 9, texts), 6);
    log.take();
    EXPECT_EQ(mirx_res_state_request_map_by_path({}, 9, map), 3);
    EXPECT_EQ(log.text(kClientTag),
              "I mirx client mirx_res_state_request_map\nE res_Path: /b, res_Value:7\n"
              "E res_Path: /d, res_Value:\nE res_Path: /b, res_Value:9\n"
              "I mirx client mirx_res_state_request_map size 3");
    service->state = {};
    EXPECT_EQ(mirxResStateRequest(asked, 9, resources), -1);
    EXPECT_EQ(mirx_res_state_request_by_path({"/a"}, {}, 9, texts), -1);
    EXPECT_EQ(mirx_res_state_request_map_by_path({}, 9, map), -1);
    EXPECT_EQ(shown(resources), "{1}{0 '7'}{0 ''}{5 '8'}{0 ''}{0 '9'}");
    EXPECT_THAT(texts, ElementsAre("kept", "7", "", "8", "", "9"));
    EXPECT_THAT(map, ElementsAre(Pair("/a", "kept"), Pair("/b", "9"), Pair("/d", "")));
}

TEST_F(AnswersTest, propertyEndsAtTheFirstZeroCharacter) {
    for (const std::string& value :
         {std::string(), std::string(255, 'x'), "head" + std::string(300, '\0')}) {
        service->property = value;
        const std::unique_ptr<char[]> text(mirxPropertyGet("a key"));
        EXPECT_STREQ(text.get(), value.c_str());
        EXPECT_EQ(log.text(kClientTag),
                  std::string("I mirx client mirxPropertyGet\nI mirxPropertyGet ") + text.get() +
                          " ");
    }
}

TEST_F(AnswersTest, propertyOver255CharactersAborts) {
    service->property = std::string(256, 'x');
    EXPECT_DEATH(mirxPropertyGet("key"), "a value of 256 characters does not fit into 255");
}
