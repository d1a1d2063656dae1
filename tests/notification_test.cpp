// Tests of notifications and rules: what they send, return and log.
#include <dov/dov.h>

#include <functional>

#include <gmock/gmock.h>

#include "tests/support/shown.h"
#include "tests/support/test_services.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

LogLine line(int priority, const std::string& text) {
    return {priority, "[DOV_CLIENT]", text};
}

const std::vector<int32_t> kAnswers = {0, 1, -1, -7, INT32_MAX, INT32_MIN};

}  // namespace

class NotificationTest : public BinderTest {};

TEST_F(NotificationTest, notificationSendsOnlyTheNumberOfValues) {
    const std::vector<std::pair<std::vector<int32_t>, size_t>> cases = {
            {{}, 1}, {{7}, 1}, {{7, 9}, 2}, {std::vector<int32_t>(1000, INT32_MIN), 1000}};
    for (const auto& [values, elements] : cases) {
        EXPECT_EQ(DovNotify(-3, INT32_MAX, values), 0);
        EXPECT_THAT(log.take(), ElementsAre(line(ANDROID_LOG_INFO, "DovNotify enter")));
        const auto calls = service->take();
        ASSERT_EQ(calls.size(), 1u);
        EXPECT_EQ(calls[0].operation, "request");
        MirxRequestParcel expected;
        expected.requestType = 10;
        expected.requestData.resize(elements);
        for (MirxRequestData& data : expected.requestData) {
            data.id = -3;
            data.arg = INT32_MAX;
        }
        EXPECT_EQ(calls[0].parcel.toString(), expected.toString());
        EXPECT_FALSE(calls[0].parcel.stringList);
    }
}

TEST_F(NotificationTest, answeredNotificationReturnsZero) {
    for (const int32_t answer : kAnswers) {
        service->answer = answer;
        EXPECT_EQ(DovNotify(1, 2, {3}), 0);
    }
}

TEST_F(NotificationTest, systemInfoIsSentWithoutALogLine) {
    for (const int32_t answer : kAnswers) {
        service->answer = answer;
        EXPECT_EQ(setRelatedSysInfo(INT32_MIN, answer), answer);
        const auto calls = service->take();
        ASSERT_EQ(calls.size(), 1u);
        EXPECT_EQ(calls[0].operation, "setRelatedSysInfo");
        EXPECT_THAT(calls[0].numbers, ElementsAre(INT32_MIN, answer));
    }
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(NotificationTest, ruleSendsItsResources) {
    const std::vector<std::vector<DovClient::Resource>> lists = {
            {}, {{0x1010010, "7"}, {-1, std::nullopt}, {0, ""}}};
    for (const auto& resources : lists) {
        for (const int32_t answer : kAnswers) {
            service->answer = answer;
            EXPECT_EQ(dovRuleCtl(200, -5, resources), answer);
            EXPECT_THAT(log.take(),
                        ElementsAre(line(ANDROID_LOG_INFO, "dovRuleCtl, ruleId:200, status:-5")));
            const auto calls = service->take();
            ASSERT_EQ(calls.size(), 1u);
            EXPECT_EQ(calls[0].operation, "ruleCtl");
            EXPECT_THAT(calls[0].numbers, ElementsAre(200, -5));
            EXPECT_EQ(shown(calls[0].data), shown(resources));
        }
    }
}

TEST_F(NotificationTest, failedCallsReturnMinusOne) {
    struct Case {
        std::string name;
        std::function<int32_t()> call;
        std::vector<LogLine> entry;
    };
    const std::vector<Case> cases = {
            {"DovNotify",
             [] { return DovNotify(1, 2, {3}); },
             {line(ANDROID_LOG_INFO, "DovNotify enter")}},
            {"setRelatedSysInfo", [] { return setRelatedSysInfo(1, 2); }, {}},
            {"dovRuleCtl",
             [] { return dovRuleCtl(1, 0, {}); },
             {line(ANDROID_LOG_INFO, "dovRuleCtl, ruleId:1, status:0")}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        service->failing = true;
        std::vector<LogLine> lines = c.entry;
        lines.push_back(
                line(ANDROID_LOG_ERROR, c.name + "() failed : mirx HAL service not available"));
        EXPECT_EQ(c.call(), -1);
        EXPECT_EQ(log.take(), lines);

        undeclare();  // the failed call has dropped the proxy, so the next one binds
        service->take();
        lines = c.entry;
        lines.push_back(
                line(ANDROID_LOG_ERROR, "Mirx is not declared, AServiceManager_isDeclared:0"));
        lines.push_back(line(ANDROID_LOG_ERROR, "dov_get_mirx_hal_and_link_to_death error:-1"));
        EXPECT_EQ(c.call(), -1);
        EXPECT_EQ(log.take(), lines);
        EXPECT_THAT(service->take(), IsEmpty());
        declare();
    }
}
