// Tests of dov::Hold and dov::Listener with a service that is killed and restarted.
#include <dov/hold.h>
#include <dov/listener.h>

#include "tests/support/test_services.h"

static const std::vector<DovClient::Resource> kResources = {{0x01010010, "1"}};

using HoldTest = BinderTest;

static int64_t releasesOf(RecordingService& service) {
    const std::vector<RecordedCall> calls = service.take();
    return std::count_if(calls.begin(), calls.end(),
                         [](const auto& call) { return call.operation == "release"; });
}

TEST_F(HoldTest, releasesOnceAndToTheServiceThatHolds) {
    service->answer = 7;
    {
        dov::Hold hold("VANTEL_ACTION_LAUNCH", "p", "i", 0);
        dov::Hold moved(std::move(hold));
        EXPECT_EQ(moved.handle(), 7);
        EXPECT_FALSE(hold);
        hold = std::move(moved);
        EXPECT_TRUE(hold.holds());
        EXPECT_EQ(releasesOf(*service), 0);
    }
    EXPECT_EQ(releasesOf(*service), 1);
    {
        const dov::Hold hold(kResources, "i", 0);
        EXPECT_TRUE(hold.holds());
        endService(1);
        serve();
        service->take();
        EXPECT_TRUE(hold);
        EXPECT_FALSE(hold.holds());
    }
    service->answer = -1;
    EXPECT_FALSE(dov::Hold(3, "p", "i", 0));
    EXPECT_EQ(releasesOf(*service), 0);
}

TEST_F(HoldTest, listenerSurvivesKills) {
    stopServing();
    std::atomic<int> calls = 0;
    dov::Listener listener({{kResources[0].opcode, ""}},
                           [&](const std::list<DovClient::Resource>& changed) {
                               EXPECT_EQ(changed.front().opcode, kResources[0].opcode);
                               ++calls;
                           });
    for (int life = 0; life < 3; ++life) {
        const auto simulator = startSimulator();
        EXPECT_TRUE(eventually([&] { return listener.isRegistered(); }));
        calls = 0;
        const dov::Hold hold(kResources, "i", 0);
        EXPECT_TRUE(eventually([&] { return calls == 1; }));
        simulator->signal(SIGKILL);
        simulator->wait();
        EXPECT_TRUE(eventually([&] { return !listener.isRegistered(); }));
    }
}

TEST_F(HoldTest, listenerMayEndInItsCallback) {
    std::atomic<int> calls = 0;
    std::unique_ptr<dov::Listener> listener;
    const std::vector<std::string> paths = {"/a"};
    listener = std::make_unique<dov::Listener>(paths, [&](const auto&, const auto&) {
        ++calls;
        listener = nullptr;
    });
    const RecordedCall call = service->awaitCall();
    ASSERT_TRUE(eventually([&] { return listener->isRegistered(); }));
    const std::vector<MirxRequestData> data = {{.path = "/a"}};
    call.callback->onCallback(data);
    EXPECT_EQ(service->awaitCall().operation, "listeningUnregister");
    call.callback->onCallback(data);
    EXPECT_EQ(calls, 1);
}
