// Tests of the queries: what they send, and how they read every kind of reply.
#include <dov/dov.h>

#include <functional>
#include <optional>
#include <stdexcept>

#include <gmock/gmock.h>

#include "tests/support/data.h"
#include "tests/support/outcome.h"
#include "tests/support/shown.h"
#include "tests/support/test_services.h"

using DovClient::Resource;
using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

using Data = std::vector<MirxRequestData>;
using Lines = std::vector<LogLine>;

LogLine debug(const std::string& text) {
    return {ANDROID_LOG_DEBUG, "[DOV_CLIENT]", text};
}
LogLine info(const std::string& text) {
    return {ANDROID_LOG_INFO, "[DOV_CLIENT]", text};
}
LogLine error(const std::string& text) {
    return {ANDROID_LOG_ERROR, "[DOV_CLIENT]", text};
}

Lines operator+(Lines lines, const Lines& more) {
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

}  // namespace

class QueryTest : public BinderTest {
  protected:
    struct Query {
        std::string name;
        std::function<int32_t()> call;
        int32_t requestType;
        Data sent;
        std::optional<std::string> package;
        Lines entry;  // always logged
        Lines calling;  // logged before the call to a bound service
        Lines empty;  // logged if the reply is empty
    };

    std::vector<Resource> list;
    std::string text;
    const std::vector<Query> queries = {
            {"DovMutiResStateRequest",
             [this] {
                 list = {{3, "x"}, {-4, std::nullopt}};
                 return DovMutiResStateRequest(list);
             },
             0,
             {element(3, "x"), element(-4)},
             {},
             {info("DovMutiResStateRequest enter")},
             {},
             {error("failed to get resource value")}},
            {"DovGetHistory",
             [this] { return DovGetHistory(text); },
             11,
             {},
             {},
             {info("dov client DovGetHistory")},
             {info("dov client hal DovGetHistory")},
             {error("failed to get history or return vector empty, data vector size 0")}},
            {"DovGetPMStatus",
             [] { return DovGetPMStatus(-5); },
             13,
             {element(-5)},
             {},
             {info("dov client DovGetPMStatus")},
             {info("dov client hal DovGetPMStatus")},
             {error("failed to get power mode status, mode -5, data vector size 0")}},
            {"DovGetPowerConsis",
             [] { return DovGetPowerConsis(); },
             15,
             {element(0x1011670, "0 1 35"), element(0x1011670, "1 1 35"),
              element(0x1011670, "2 1 35")},
             "none",
             {info("dov client DovGetPowerConsis")},
             {},
             {}},
            {"Dov_fetch_dataset",
             [this] { return Dov_fetch_dataset(list); },
             16,
             {},
             {},
             {info("Dov_fetch_dataset enter")},
             {},
             {error("failed to get resource value")}},
            {"DovGetFeatureStatus",
             [] { return DovGetFeatureStatus(INT32_MIN); },
             17,
             {element(INT32_MIN)},
             {},
             {info("DovGetFeatureStatus enter")},
             {},
             {error("failed to get resource value, 0")}},
    };
};

TEST_F(QueryTest, eachSendsItsRequestAndFailsOnAnEmptyReply) {
    for (const Query& query : queries) {
        SCOPED_TRACE(query.name);
        text = "kept";
        list = {{1, "kept"}};
        EXPECT_EQ(query.call(), -1);
        EXPECT_EQ(log.take(), query.entry + query.calling + query.empty);
        EXPECT_EQ(text, "kept");
        const auto calls = service->take();
        ASSERT_EQ(calls.size(), 1u);
        EXPECT_EQ(calls[0].operation, "stateRequest");
        MirxRequestParcel expected;
        expected.requestType = query.requestType;
        expected.requestData = query.sent;
        expected.packageName = query.package;
        EXPECT_EQ(calls[0].parcel.toString(), expected.toString());
    }
}

TEST_F(QueryTest, failedQueriesReturnMinusOne) {
    const Lines unbound = {error("Mirx is not declared, AServiceManager_isDeclared:0"),
                           error("dov_get_mirx_hal_and_link_to_death error:-1")};
    for (const Query& query : queries) {
        SCOPED_TRACE(query.name);
        text = "kept";
        list = {{1, "kept"}};
        service->state = {element(3, "7")};
        service->failing = true;
        const Lines failed = {error(query.name + "() failed : mirx HAL service not available")};
        EXPECT_EQ(query.call(), -1);
        EXPECT_EQ(log.take(), query.entry + query.calling + failed + query.empty);

        undeclare();  // the failed call has dropped the proxy, so the next one binds
        service->take();
        EXPECT_EQ(query.call(), -1);
        EXPECT_EQ(log.take(), query.entry + unbound);
        EXPECT_THAT(service->take(), IsEmpty());
        EXPECT_EQ(text, "kept");
        if (query.name == "Dov_fetch_dataset") {
            EXPECT_THAT(shown(list), ElementsAre("00000001 'kept'"));
        }
        declare();
    }
}

TEST_F(QueryTest, eachQueryParsesItsNumber) {
    const std::string invalid = "Invalid argument exception: ";
    const std::string outOfRange = "Out of range exception: ";
    struct Case {
        Data reply;
        std::string power, mode, feature;
        std::string printed;  // by the power-mode query
        Lines featureLines;
    };
    const std::vector<Case> cases = {
            {{element(1, "42")}, "42", "42", "42", "", {}},
            {{element(0, " \n-7x")}, "-7", "-7", "-7", "", {}},
            {{element(0, "+0010 9")}, "10", "10", "10", "", {}},
            {{element(0, "0x10")}, "0", "0", "0", "", {}},
            {{element(0, "2147483647")}, "2147483647", "2147483647", "2147483647", "", {}},
            {{element(0, "-2147483648")}, "-2147483648", "-2147483648", "-2147483648", "", {}},
            {{element(0, "2147483648")}, "out of range", "-1", "out of range", outOfRange, {}},
            {{element(0, "-99999999999999999999")},
             "out of range",
             "-1",
             "out of range",
             outOfRange,
             {}},
            {{element(0, "")}, "no number", "-1", "no number", invalid, {}},
            {{element(0, "x1")}, "no number", "-1", "no number", invalid, {}},
            {{element(0)}, "no value", "no value", "no value", "", {}},
            {{element(1, "1"), element(2, "2")},
             "1",
             "1",
             "-1",
             "",
             {error("failed to get resource value, 2")}},
            {{element(1), element(2, "2"), element(3)},
             "no value",
             "no value",
             "-1",
             "",
             {error("failed to get resource value, 3")}},
    };
    ASSERT_EQ(dovInit(), 0);
    const int bound = services().declarationChecks;
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::PrintToString(shown(c.reply)));
        service->state = c.reply;
        log.take();
        EXPECT_EQ(outcome(DovGetPowerConsis), c.power);
        EXPECT_EQ(log.take(), Lines{info("dov client DovGetPowerConsis")});

        testing::internal::CaptureStdout();
        EXPECT_EQ(outcome([] { return DovGetPMStatus(2); }), c.mode);
        const std::string printed = testing::internal::GetCapturedStdout();
        if (c.printed.empty()) {
            EXPECT_EQ(printed, "");
        } else {
            EXPECT_THAT(printed, AllOf(StartsWith(c.printed + "stoi"), EndsWith("\n")));
        }
        EXPECT_THAT(log.take(), ElementsAre(info("dov client DovGetPMStatus"),
                                            info("dov client hal DovGetPMStatus")));

        EXPECT_EQ(outcome([] { return DovGetFeatureStatus(3); }), c.feature);
        EXPECT_EQ(log.take(), Lines{info("DovGetFeatureStatus enter")} + c.featureLines);
    }
    EXPECT_EQ(services().declarationChecks, bound) << "an unreadable reply dropped the proxy";
}

TEST_F(QueryTest, resourcesGetTheValuesOfTheReply) {
    const LogLine unmatched = info("not match any opcode in dovcore");
    const auto got = [](const std::string& text) { return debug("get resource value, " + text); };
    struct Case {
        std::vector<Resource> asked;
        Data reply;
        int32_t count;
        std::vector<Resource> answered;
        Lines lines;
    };
    const std::vector<Case> cases = {
            {{{0x10, "old"}},
             {element(0x10, "new")},
             1,
             {{0x10, "new"}},
             {got("opcode 0x00000010, value new")}},
            {{{0x10, "old"}, {0x20, std::nullopt}, {-1, "x"}},
             {element(-1, ""), element(0x30, "30"), element(0x20, "20")},
             2,
             {{0x10, "old"}, {0x20, "20"}, {-1, ""}},
             {unmatched, got("opcode 0x00000020, value 20"), got("opcode 0xffffffff, value ")}},
            // The first element with the opcode applies, even without a value.
            {{{0x10, "old"}, {0x10, std::nullopt}},
             {element(0x10), element(0x10, "late")},
             0,
             {{0x10, "old"}, {0x10, std::nullopt}},
             {}},
            {{{0x10, "a"}, {0x10, "b"}},
             {element(0x10, "1"), element(0x10, "2")},
             2,
             {{0x10, "1"}, {0x10, "1"}},
             {got("opcode 0x00000010, value 1"), got("opcode 0x00000010, value 1")}},
            {{{0x10, "old"}}, {element(0x11, "1")}, 0, {{0x10, "old"}}, {unmatched}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::PrintToString(shown(c.asked)));
        service->state = c.reply;
        std::vector<Resource> resources = c.asked;
        EXPECT_EQ(DovMutiResStateRequest(resources), c.count);
        EXPECT_EQ(shown(resources), shown(c.answered));
        EXPECT_EQ(log.take(), Lines{info("DovMutiResStateRequest enter")} + c.lines);
    }
}

TEST_F(QueryTest, emptyResourceListIsNotSent) {
    std::vector<Resource> none;
    service->state = {element(1, "1")};
    EXPECT_EQ(DovMutiResStateRequest(none), -1);
    EXPECT_THAT(log.take(), ElementsAre(info("DovMutiResStateRequest enter"),
                                        error("input resource is empty, return")));
    EXPECT_THAT(service->take(), IsEmpty());
    EXPECT_THAT(none, IsEmpty());
}

TEST_F(QueryTest, singleQueryKeepsItsValueWithoutAnAnswer) {
    struct Case {
        int32_t opcode;
        Data reply;
        std::string value;
        int32_t requestType;
    };
    const std::vector<Case> cases = {
            {0x10, {element(0x10, "new")}, "new", 0},
            {0x10, {element(0x10, "")}, "", 0},
            {0x10, {element(0x10)}, "kept", 0},
            {0x10, {element(0x11, "1")}, "kept", 0},
            {0x10, {}, "kept", 0},
            {0x1011670, {element(0x10, "77")}, "77", 15},
            {0x1011670, {}, "-1", 15},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.opcode);
        service->state = c.reply;
        std::string value = "kept";
        DovResStateRequest(c.opcode, value);
        EXPECT_EQ(value, c.value);
        const auto calls = service->take();
        ASSERT_EQ(calls.size(), 1u);
        EXPECT_EQ(calls[0].parcel.requestType, c.requestType);
        const Lines lines = log.take();
        if (c.requestType == 0) {
            EXPECT_THAT(shown(calls[0].parcel.requestData), ElementsAre("00000010 ''"));
            EXPECT_EQ(lines.at(0), info("DovResStateRequest enter"));
            EXPECT_EQ(lines.at(1), info("DovMutiResStateRequest enter"));
        } else {
            EXPECT_EQ(lines, Lines{info("dov client DovGetPowerConsis")});
        }
    }
    service->state = {element(0x1011670, "x")};
    std::string value = "kept";
    EXPECT_THROW(DovResStateRequest(0x1011670, value), std::invalid_argument);
    EXPECT_EQ(value, "kept");
}

TEST_F(QueryTest, historyEntriesAreJoined) {
    const std::vector<std::pair<std::vector<std::optional<std::string>>, std::string>> cases = {
            {{"a", "b"}, "start:a;b;end"},
            {{std::nullopt}, "start:none;end"},
            {{"", std::nullopt, "c"}, "start:;none;c;end"},
            {std::vector<std::optional<std::string>>(3, "a;b"), "start:a;b;a;b;a;b;end"},
    };
    for (const auto& [entries, joined] : cases) {
        service->state.clear();
        for (const auto& entry : entries) {
            service->state.push_back(element(1, "not this"));
            service->state.back().extra = entry;
        }
        std::string history = "old";
        EXPECT_EQ(DovGetHistory(history), 0);
        EXPECT_EQ(history, joined);
        EXPECT_THAT(log.take(), ElementsAre(info("dov client DovGetHistory"),
                                            info("dov client hal DovGetHistory"),
                                            debug("get history successful: " + joined)));
    }
}

TEST_F(QueryTest, datasetEndsAtAnEntryWithoutAValue) {
    std::vector<Resource> dataset = {{1, "one"}, {2, std::nullopt}};
    service->state = {element(1, "again"), element(-3, "")};
    EXPECT_EQ(Dov_fetch_dataset(dataset), 4);
    service->state = {element(4, "four"), element(5), element(6, "six")};
    EXPECT_THROW(Dov_fetch_dataset(dataset), std::bad_optional_access);
    EXPECT_THAT(shown(dataset), ElementsAre("00000001 'one'", "00000002 absent", "00000001 'again'",
                                            "fffffffd ''", "00000004 'four'"));
    EXPECT_THAT(log.take(),
                ElementsAre(info("Dov_fetch_dataset enter"), info("Dov_fetch_dataset enter")));
}
