// Tests of thermal notifications and registrations.
#include "tests/support/client_test.h"

using namespace mirxHalclient;
using testing::Contains;
using testing::ElementsAre;

class ThermalTest : public ClientTest {};

TEST_F(ThermalTest, levelsAreSentAndReturnZeroIfAccepted) {
    std::list<DovClient::Resource> levels = {{5, "3"}, {0, std::nullopt}};
    const std::pair<int, int> answers[] = {{1, 0}, {9, 0}, {0, -1}, {-1, -1}};
    for (const auto& [answer, result] : answers) {
        service->answer = answer;
        EXPECT_EQ(mirxThermalNotify(levels, 8), result);
        EXPECT_EQ(theParcel(),
                  control(7, 0, 0, 0, false, 8, {element(5, "3"), element(0, "")}).toString());
    }
    log.take();
    levels.push_back({6, ""});
    EXPECT_EQ(mirxThermalNotify(levels, 8), -1);
    EXPECT_THAT(log.take(),
                ElementsAre(info("mirx client mirxThermalNotify"),
                            error("mirxThermalNotify ERROR: size unmatched for id and level ")));
    EXPECT_TRUE(service->take().empty());
}

TEST_F(ThermalTest, sameSubsystemsCanBeRegisteredTwice) {
    service->counting = true;
    const auto callback = std::make_shared<Heard>();
    for (int i = 0; i < 2; ++i) mirxThermalListeningRegister({1}, callback);
    for (const RecordedCall& call : service->take()) call.callback->onCallback({element(1, "2")});
    EXPECT_EQ(callback->take().size(), 2u);
    for (const int handle : {2, 3}) {
        log.take();
        mirxResListeningUnRegister(handle);
        EXPECT_THAT(clientLines(),
                    Contains(info("a callback has been unregistered to Mirx HAL handle " +
                                  std::to_string(handle))));
    }
}
