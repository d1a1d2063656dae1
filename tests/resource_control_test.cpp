// Tests of resource control: what it sends, rejects and returns.
#include "tests/support/client_test.h"

using namespace mirxHalclient;
using testing::ElementsAre;

using Resources = std::list<DovClient::Resource>;

class ResourceControlTest : public ClientTest {
  protected:
    std::shared_ptr<IClientCallback> callback = std::make_shared<Heard>();
};

TEST_F(ResourceControlTest, shorterFormsSendDefaults) {
    Resources list = {{0x1010010, "7"}, {0, std::nullopt}, {static_cast<int32_t>(0xf0000001), "x"}};
    const std::vector<MirxRequestData> data = {element(0x1010010, "7"), element(0, ""),
                                               element(static_cast<int32_t>(0xf0000001), "x")};
    const struct {
        std::function<int()> call;
        MirxRequestParcel sent;
    } forms[] = {
            {[&] { return mirxResCtlRequest(1000, list, 1234); },
             control(1, -1, 1000, -1, false, 1234, data)},
            {[&] { return mirxResCtlRequest(1000, list, 7, 1234); },
             control(1, -1, 1000, -1, true, 1234, data)},
            {[&] { return mirxResCtlRequest(1000, list, 8, 7, 1234); },
             control(1, -1, 1000, 8, true, 1234, data)},
            {[&] { return mirxResCtlRequest(5, 1000, list, 1234); },
             control(1, 5, 1000, -1, false, 1234, data)},
            {[&] { return mirxResCtlRequest(5, 1000, list, 7, 1234); },
             control(1, 5, 1000, -1, true, 1234, data)},
            {[&] { return mirxResCtlRequest(5, 1000, list, 8, 7, 1234); },
             control(1, 5, 1000, 8, true, 1234, data)},
            {[&] { return mirxResCtlRequest(5, 1000, list, 8, 7, 1234, callback); },
             control(1, 5, 1000, 8, true, 1234, data)},
    };
    service->answer = INT32_MIN;
    for (const auto& form : forms) {
        EXPECT_EQ(form.call(), INT32_MIN);
        EXPECT_EQ(theParcel(), form.sent.toString());
    }
}

TEST_F(ResourceControlTest, positiveFlagsAreTrueAndDurationsUnchanged) {
    Resources none;
    const struct {
        int flag;
        bool sent;
    } flags[] = {{INT32_MIN, false}, {-1, false}, {0, false}, {1, true}, {7, true}};
    for (const auto& [flag, sent] : flags) {
        for (const int duration : {-1, 0, INT32_MIN, INT32_MAX}) {
            const std::string parcel = control(1, 2, duration, 3, sent, 4, {}).toString();
            mirxResCtlRequest(2, duration, none, 3, flag, 4);
            EXPECT_EQ(theParcel(), parcel);
            mirxResCtlRequest(2, duration, none, 3, flag, 4, callback);
            EXPECT_EQ(theParcel(), parcel);
        }
    }
}

TEST_F(ResourceControlTest, listsWithUnmatchedValuesAreRejected) {
    const struct {
        Resources list;
        bool valid;
    } cases[] = {
            {{}, true},
            {{{0, std::nullopt}}, true},
            {{{0, ""}}, true},
            {{{0, "1"}}, false},
            {{{5, "1"}}, true},
            {{{-5, "1"}}, true},
            {{{5, ""}}, false},
            {{{5, std::nullopt}}, false},
            {{{5, "1"}, {0, ""}, {6, "2"}}, true},
            {{{5, "1"}, {0, ""}, {6, ""}}, false},
    };
    for (auto [list, valid] : cases) {
        SCOPED_TRACE(testing::PrintToString(plain(list)));
        EXPECT_EQ(checkResourceList(list), valid);
        log.take();
        EXPECT_EQ(mirxResCtlRequest(1, list, 2), valid ? 1 : -1);
        EXPECT_EQ(mirxResCtlRequest(-1, 1, list, 0, 0, 2, callback), valid ? 1 : -1);
        EXPECT_EQ(service->take().size(), valid ? 2 : 0);
        if (valid) continue;
        EXPECT_THAT(
                log.take(),
                ElementsAre(info("mirx client mirxResCtlRequest"),
                            error("mirxResCtlRequest ERROR: size unmatched for id and value "),
                            info("mirx client mirxResCtlRequest with callback"),
                            error("mirx client mirx_resctl_request ERROR: size unmatched for id "
                                  "and value ")));
    }
    EXPECT_EQ(waitingCallbacks(), 6u) << "a rejected request left its callback";
}

TEST_F(ResourceControlTest, listIsNotCheckedWithoutAService) {
    undeclare();
    Resources wrong = {{0, "1"}};
    EXPECT_EQ(mirxResCtlRequest(1, wrong, 2), -1);
    EXPECT_THAT(log.take(),
                ElementsAre(info("mirx client mirxResCtlRequest"),
                            error("Mirx is not declared, AServiceManager_isDeclared:0")));
}

TEST_F(ResourceControlTest, releaseSendsTheHandleAndReturnsTheAnswer) {
    for (const int handle : {-1, 0, INT32_MAX, INT32_MIN}) {
        service->answer = handle / 2;
        EXPECT_EQ(mirxResCtlRelease(handle), handle / 2);
        const RecordedCall call = theCall();
        EXPECT_EQ(call.operation, "release");
        EXPECT_THAT(call.numbers, ElementsAre(handle));
    }
}

TEST_F(ResourceControlTest, deadServiceIsLoggedAndTheNextCallBinds) {
    const HeldBackDeath unheard;
    Resources none;
    ASSERT_EQ(mirxResCtlRequest(1, none, 2), 1);
    stopServing();
    log.take();
    EXPECT_EQ(mirxResCtlRequest(1, none, 2), -1);
    EXPECT_THAT(clientLines(),
                ElementsAre(info("mirx client mirxResCtlRequest"), failed("mirxResCtlRequest")));
    serve();
    EXPECT_EQ(mirxResCtlRequest(1, none, 2), 1);
}
