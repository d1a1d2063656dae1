// Tests of processes that exit or unload the library while they use it.
#include <atomic>
#include <latch>
#include <thread>

#include <gmock/gmock.h>

#include "tests/support/child_process.h"
#include "tests/support/data.h"
#include "tests/support/test_services.h"

class ExitTest : public BinderTest {
  protected:
    // Starts the program and waits until it uses both bindings.
    void start(const char* mode) {
        child = std::make_unique<ChildProcess>(EXIT_PROGRAM, std::vector<std::string>{mode});
        child->readUntil("ready");
    }

    // Lets it reach the state that its mode names.
    void proceed() {
        child->signal(SIGUSR1);
        child->readUntil("ready");
    }

    // Makes the program exit and returns its exit code. After a timeout it is not zero.
    int end() {
        child->signal(SIGUSR1);
        return child->wait(std::chrono::seconds(20));
    }

    // The callback objects that the service has received from the program.
    std::vector<std::shared_ptr<IMirxCallback>> callbacks() {
        std::vector<std::shared_ptr<IMirxCallback>> result;
        for (const RecordedCall& call : service->take()) {
            if (call.callback) result.push_back(call.callback);
            if (call.parcel.callback) result.push_back(call.parcel.callback);
        }
        return result;
    }

    std::unique_ptr<ChildProcess> child;
};

TEST_F(ExitTest, processExitsDuringCallbacksAndServiceDeath) {
    for (int round = 0; round < 10; ++round) {
        start("listening");
        std::atomic<int> answered = 0;
        std::vector<std::thread> callers;
        for (const auto& callback : callbacks()) {
            callers.emplace_back([callback, &answered] {
                while (callback->onCallback({element(1, "1")}).isOk()) ++answered;
            });
        }
        ASSERT_EQ(callers.size(), 2u);
        EXPECT_TRUE(eventually([&] { return answered > 10 * round; }));
        if (round % 2 == 1) stopServing();
        EXPECT_EQ(end(), 0);
        for (std::thread& caller : callers) caller.join();
        if (round % 2 == 1) serve();
    }
}

TEST_F(ExitTest, processExitsDuringCalls) {
    struct Calls {
        std::atomic<int> received = 0;
        std::latch letGo{1};
    };
    for (int round = 0; round < 5; ++round) {
        const bool held = round == 0;  // in the service, beyond the program's exit
        const auto calls = std::make_shared<Calls>();
        start("calling");
        service->whenCalled([calls, held](const std::string&) {
            ++calls->received;
            if (held) calls->letGo.wait();
        });
        proceed();
        EXPECT_TRUE(eventually([&] { return calls->received > (held ? 0 : 10 * round); }));
        if (round % 2 == 1) stopServing();
        EXPECT_EQ(end(), 0);
        service->whenCalled(nullptr);
        calls->letGo.count_down();
        if (round % 2 == 1) serve();
    }
}

// One thread waits for the service and holds the lock. The death notice and further calls wait for
// that lock.
TEST_F(ExitTest, processExitsWhileWaitingForTheService) {
    start("waiting");
    stopServing();
    child->signal(SIGUSR1);
    child->readUntil("waiting");  // may come before the next "ready"
    EXPECT_EQ(end(), 0);
}

// Binder threads still execute the library's code, so it must stay mapped.
TEST_F(ExitTest, libraryStaysLoadedAfterDlclose) {
    start("unloading");
    proceed();
    auto all = callbacks();
    ASSERT_EQ(all.size(), 2u);
    for (const auto& callback : all) EXPECT_TRUE(callback->onCallback({element(1, "1")}).isOk());
    all.clear();
    stopServing();
    for (int binding = 0; binding < 2; ++binding) child->readUntil("died");
    EXPECT_EQ(end(), 0);
}
