// Tests with the service in its own process, which is killed and restarted.
#include <dov/dov.h>
#include <dov/halclient.h>

#include <filesystem>
#include <thread>

#include <gmock/gmock.h>

#include "dovctl/process.h"
#include "tests/support/test_services.h"

class DeathTest : public BinderTest {
  protected:
    DeathTest() { stopServing(); }

    // The pid of the service according to the service manager; 0 if there is none.
    static pid_t servingProcess() { return dovctl::serviceProcess(std::chrono::minutes(1)).pid; }
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
    EXPECT_GT(DovEventAcquireOneWay(1, "p", "i", 0, {}), 0);
    EXPECT_THAT(simulator->readUntil("one-way"), testing::HasSubstr("event acquire (8)"));
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
