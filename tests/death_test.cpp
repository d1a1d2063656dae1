// Tests with the service in its own process, which is killed and restarted.
#include <dov/dov.h>
#include <dov/halclient.h>

#include <filesystem>
#include <thread>

#include <binder/IServiceManager.h>
#include <gmock/gmock.h>

#include "tests/support/child_process.h"
#include "tests/support/test_services.h"

using testing::HasSubstr;

class DeathTest : public BinderTest {
  protected:
    DeathTest() { stopServing(); }

    // The pid of the service according to the service manager; 0 if there is none.
    static pid_t servingProcess() {
        for (const auto& service : android::defaultServiceManager()->getServiceDebugInfo()) {
            if (service.name == kServiceName) return service.pid;
        }
        return 0;
    }
};

TEST_F(DeathTest, killedServiceIsReplacedByItsSuccessor) {
    auto simulator = startSimulator();
    EXPECT_EQ(dovInit(), 0);
    simulator->signal(SIGKILL);
    EXPECT_EQ(simulator->wait(), -SIGKILL);
    EXPECT_TRUE(eventually([] { return servingProcess() == 0; }));
    // Each call fails at once, whether the death notice has arrived or not.
    EXPECT_LT(dovInit(), 0);
    EXPECT_EQ(dovInit(), -1);
    EXPECT_EQ(DovEventAcquire(1, "p", "i", 0, {}), -1);

    std::thread waiting(mirxHalclient::mirx_init);
    simulator = startSimulator();
    waiting.join();
    EXPECT_EQ(servingProcess(), simulator->pid());
    EXPECT_EQ(dovInit(), 0);
    EXPECT_GT(DovEventAcquire(1, "p", "i", 0, {}), 0);
    simulator->readUntil("request");
}

TEST_F(DeathTest, onlyTheOwnersLiveSocketRemains) {
    if (overDriver()) GTEST_SKIP() << "tests the sockets in the services folder";
    for (int i = 0; i < 3; ++i) {
        const auto simulator = startSimulator();
        simulator->signal(SIGKILL);
        simulator->wait();
    }
    const auto simulator = startSimulator();
    int files = 0, sockets = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder())) {
        ++files;
        if (!entry.is_socket()) continue;
        ++sockets;
        EXPECT_EQ(entry.status().permissions(), std::filesystem::perms(0600)) << entry.path();
    }
    EXPECT_EQ(sockets, 1);
    EXPECT_EQ(files, 3) << "fragment, registration and socket";
}

TEST_F(DeathTest, journalSaysWhyAHoldOrAListenerEnds) {
    const auto simulator = startSimulator();
    const auto ended = [&](int32_t handle, const std::string& why) {
        EXPECT_EQ(simulator->readUntil("ended"),
                  "ended    handle " + std::to_string(handle) + ": " + why);
    };
    ChildProcess listener(DOVCTL, {"listen", "--opcode", "0x01010010"});
    simulator->readUntil("listen");
    const int32_t released = DovEventAcquire(0, "com.example", "me", 0, {{0x1010010, "7"}});
    EXPECT_THAT(simulator->readUntil("request"),
                testing::AllOf(HasSubstr("event acquire (8)"), HasSubstr("\"com.example\""),
                               HasSubstr("{id=0x01010010 value=\"7\"}")));
    EXPECT_EQ(listener.readUntil(""), "0x01010010  7");
    listener.signal(SIGKILL);
    EXPECT_THAT(simulator->readUntil("unlisten"), HasSubstr(": its process died"));
    ended(DovEventAcquire(0, "com.example", "me", 20, {}), "time ran out");
    DovRelease(released);
    ended(released, "released");
    const int32_t oneWay = DovEventAcquireOneWay(-2, "", "me", -1, {{1, "1"}});
    EXPECT_THAT(simulator->readUntil("one-way"), HasSubstr("resource control (1)"));
    DovRelease(oneWay);
    ended(oneWay, "released");
    DovRelease(4711);
    EXPECT_THAT(simulator->readUntil("         "), HasSubstr("4711 holds nothing"));
    simulator->signal(SIGTERM);
    EXPECT_EQ(simulator->wait(std::chrono::seconds(20)), 0);
}

TEST_F(DeathTest, listenersCanRegisterWithTheSuccessor) {
    struct Silent : IClientCallback {
        void onCallback(std::list<DovClient::Resource>) override {}
    };
    const auto callback = std::make_shared<Silent>();
    std::list<DovClient::Resource> first = {{1, "1"}};
    std::list<DovClient::Resource> second = {{2, "1"}};
    auto simulator = startSimulator();
    const int dead = mirxHalclient::mirxResListeningRegister(first, 1, callback);
    simulator->signal(SIGKILL);
    simulator->wait();
    simulator = startSimulator();
    // The first calls may still use the dead proxy.
    EXPECT_TRUE(eventually(
            [&] { return mirxHalclient::mirxResListeningRegister(second, 1, callback) > 0; }));
    EXPECT_EQ(mirxHalclient::mirxResListeningRegister(first, 1, callback), -1)
            << "the registry forgot a registration with the dead service";
    EXPECT_EQ(mirxHalclient::mirxResListeningUnRegister(dead), -1)
            << "the dead service's handle is still valid";
    EXPECT_GT(mirxHalclient::mirxResListeningRegister(first, 1, callback), 0);
}
