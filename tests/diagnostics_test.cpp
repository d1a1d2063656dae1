// Tests of the diagnostic requests: their codes and results.
#include "tests/support/client_test.h"

using namespace mirxHalclient;
using testing::ElementsAre;

class DiagnosticsTest : public ClientTest {};

TEST_F(DiagnosticsTest, eachSendsItsCodeAndReturnsZeroIfAccepted) {
    const struct {
        std::string name;
        int (*call)();
        int code;
    } cases[] = {
            {"mirxDumpToDoQueue", mirxDumpToDoQueue, 0},
            {"mirxDumpRunMap", mirxDumpRunMap, 1},
            {"mirxDumpActiveResMap", mirxDumpActiveResMap, 2},
            {"mirxDumpResRequest", mirxDumpResRequest, 3},
            {"mirxDumpResInfo", mirxDumpResInfo, 4},
            {"mirxDumpSAInfo", mirxDumpSAInfo, 5},
            {"mirxDumpPidFdList", mirxDumpPidFdList, 6},
            {"mirxDumpPidfdMonitorMap", mirxDumpPidfdMonitorMap, 7},
            {"mirxDumpResRecordList", mirxDumpResRecordList, 8},
            {"mirxHistoryRequestRecordOn", mirxHistoryRequestRecordOn, 10},
            {"mirxHistoryRequestRecordOff", mirxHistoryRequestRecordOff, 11},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const LogLine entry = info("mirx client " + c.name);
        const std::pair<int, int> answers[] = {{1, 0}, {7, 0}, {0, -1}, {-1, -1}};
        for (const auto& [answer, result] : answers) {
            service->answer = answer;
            EXPECT_EQ(c.call(), result);
            EXPECT_THAT(log.take(), ElementsAre(entry));
            EXPECT_EQ(theParcel(), control(5, 0, 0, 1, false, 0, {element(c.code)}).toString());
        }
        service->answer = 1;
        service->failing = true;
        EXPECT_EQ(c.call(), -1);
        EXPECT_THAT(log.take(), ElementsAre(entry, failed(c.name)));
        service->failing = false;
        service->take();
    }
    undeclare();
    EXPECT_EQ(mirxDumpRunMap(), -1);
}
