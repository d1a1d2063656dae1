// Tests of the two bindings: how they bind, drop their proxies and bind again.
#include <dov/dov.h>
#include <dov/halclient.h>

#include <latch>
#include <thread>

#include <android/binder_libbinder.h>
#include <gmock/gmock.h>

#include <aidl/vendor/tavro/hardware/mirx/BnMirxCallback.h>

#include "dovctl/process.h"
#include "tests/support/holdings.h"
#include "tests/support/test_services.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

LogLine clientError(const std::string& text) {
    return {ANDROID_LOG_ERROR, "MIRXFramework-lib-vendor", text};
}
LogLine dovError(const std::string& text) {
    return {ANDROID_LOG_ERROR, "[DOV_CLIENT]", text};
}

const LogLine kClientEntry = {ANDROID_LOG_INFO, "MIRXFramework-lib-vendor",
                              "mirx client mirx_init"};
const LogLine kDovEntry = dovError("dovInit enter");
const LogLine kClientFailure = clientError("mirx_init() failed: mirx HAL service not available");
const LogLine kDovFailure = dovError("mirx_init() failed : mirx HAL service not available");
const LogLine kDovNotBound = dovError("dov_get_mirx_hal_and_link_to_death error:-1");
const LogLine kClientDeath = clientError("Mirx HAL Service died");
const LogLine kDovDeath = dovError("Mirx HAL Service died");

// An object of another interface, registered under the service's name.
class OtherInterface : public aidl::vendor::tavro::hardware::mirx::BnMirxCallback {
    ndk::ScopedAStatus onCallback(const std::vector<MirxRequestData>&) override {
        return ndk::ScopedAStatus::ok();
    }
};

}  // namespace

class BindingTest : public BinderTest {
  protected:
    static void initEvents() { dovInit(); }

    // The pid of the service according to the service manager; 0 if there is none.
    static pid_t servingProcess() { return dovctl::serviceProcess(std::chrono::minutes(1)).pid; }

    bool hasLogged(const LogLine& line, long count = 1) {
        for (LogLine& logged : log.take()) mLines.push_back(std::move(logged));
        return std::count(mLines.begin(), mLines.end(), line) >= count;
    }
    bool eventuallyLogged(const LogLine& line, long count = 1) {
        return eventually([&] { return hasLogged(line, count); });
    }

    // Expects that neither binding binds, and that they log why.
    void expectNotBound(const std::string& clientReason, const std::string& dovReason) {
        mirxHalclient::mirx_init();
        EXPECT_EQ(dovInit(), -1);
        EXPECT_THAT(log.take(), ElementsAre(kClientEntry, clientError(clientReason), kDovEntry,
                                            dovError(dovReason), kDovNotBound));
    }

    std::vector<LogLine> mLines;
};

TEST_F(BindingTest, serviceThatCannotBeBoundFailsEveryCall) {
    undeclare();
    for (int call = 0; call < 2; ++call) {
        expectNotBound("Mirx is not declared, AServiceManager_isDeclared:0",
                       "Mirx is not declared, AServiceManager_isDeclared:0");
    }
    EXPECT_EQ(services().waits, 0);
    declare();
    services().localObject = service->asBinder();  // which cannot be linked to
    expectNotBound("Unable to link to g_mirx_hal death notifications!",
                   "Unable to link to g_dov_hal death notifications!");
    services().localObject = nullptr;
    serveAsItIs(ndk::SharedRefBase::make<OtherInterface>()->asBinder());
    expectNotBound("Mirx HAL Service not found", "Mirx HAL Service not found");
    EXPECT_THAT(service->take(), IsEmpty());
    serve();
    EXPECT_EQ(dovInit(), 0);
}

TEST_F(BindingTest, failedCallDropsOnlyItsOwnProxy) {
    const struct {
        void (*fails)();
        LogLine entry, failure;
        void (*other)();
    } cases[] = {
            {initEvents, kDovEntry, kDovFailure, mirxHalclient::mirx_init},
            {mirxHalclient::mirx_init, kClientEntry, kClientFailure, initEvents},
    };
    for (const auto& [fails, entry, failure, other] : cases) {
        fails();
        other();
        const int bound = services().declarationChecks;
        log.take();
        service->failing = true;
        fails();
        EXPECT_THAT(log.take(), ElementsAre(entry, failure));
        service->failing = false;
        other();
        EXPECT_EQ(services().declarationChecks, bound) << "the other binding was dropped too";
        fails();
        EXPECT_EQ(services().declarationChecks, bound + 1);
    }
}

TEST_F(BindingTest, bothBindingsBindAgainAfterTheServicesDeath) {
    mirxHalclient::mirx_init();
    ASSERT_EQ(dovInit(), 0);
    for (int death = 0; death < 3; ++death) {
        log.take();
        stopServing();
        EXPECT_TRUE(eventuallyLogged(kClientDeath));
        EXPECT_TRUE(eventuallyLogged(kDovDeath));
        EXPECT_EQ(mLines.size(), 2u);
        EXPECT_EQ(dovInit(), -1) << "it does not wait";
        serve();
        service->take();
        EXPECT_EQ(dovInit(), 0);
        mirxHalclient::mirx_init();
        EXPECT_EQ(service->take().size(), 2u);
        mLines.clear();
    }
}

TEST_F(BindingTest, killedServiceIsReplacedByItsSuccessor) {
    stopServing();
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

// Commands that a thread has queued reach the driver only with its next call.
TEST_F(BindingTest, droppedProxyCanBeBoundByAnotherThread) {
    ASSERT_EQ(dovInit(), 0);
    service->failing = true;
    EXPECT_EQ(dovInit(), -2);
    service->failing = false;
    std::thread([] { EXPECT_EQ(dovInit(), 0); }).join();
    EXPECT_EQ(dovInit(), 0);
    log.take();
    stopServing();
    EXPECT_TRUE(eventually([this] { return !log.take().empty(); }))
            << "no binding was notified of the death";
}

TEST_F(BindingTest, waitingClientCallsBindOnce) {
    stopServing();
    std::vector<std::thread> callers;
    for (int i = 0; i < 4; ++i) callers.emplace_back([] { mirxHalclient::mirx_init(); });
    EXPECT_TRUE(eventuallyLogged(kClientEntry, 4));
    EXPECT_TRUE(eventually([] { return services().waits == 1; }));
    serve();
    for (std::thread& caller : callers) caller.join();
    EXPECT_EQ(services().waits, 1);
    EXPECT_EQ(service->take().size(), 4u);
    endService(1);
}

// A thread logs this line, with a 1, when another thread has bound before it.
// Callers depend on the line. To cause it, one call blocks; a failed call then
// waits to drop the proxy, and further threads queue behind that drop.
TEST_F(BindingTest, secondThreadLogsAndUsesTheBoundProxy) {
    const LogLine second = clientError("Mirx is not declared, AServiceManager_isDeclared:1");
    for (int attempt = 0; attempt < 1000 && !hasLogged(second); ++attempt) {
        service->whenCalled(nullptr);
        mirxHalclient::mirx_init();
        services().waits = 0;
        log.take();
        mLines.clear();
        std::latch end(1);
        std::atomic<int> calls = 0;
        service->whenCalled([&](const std::string&) {
            if (calls++ == 0) end.wait();
        });
        std::vector<std::thread> threads;
        threads.emplace_back(mirxHalclient::mirx_init);
        ASSERT_TRUE(eventually([&] { return calls == 1; }));
        service->failing = true;
        threads.emplace_back(mirxHalclient::mirx_init);
        ASSERT_TRUE(eventuallyLogged(kClientFailure));
        service->failing = false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        for (int i = 0; i < 4; ++i) threads.emplace_back(mirxHalclient::mirx_init);
        ASSERT_TRUE(eventuallyLogged(kClientEntry, 6));
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        end.count_down();
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(services().waits, 1);
        EXPECT_EQ(calls, 6);
    }
    EXPECT_TRUE(hasLogged(second));
}

TEST_F(BindingTest, concurrentEventCallsAllSucceed) {
    std::vector<std::thread> callers;
    for (int i = 0; i < 4; ++i) callers.emplace_back([] { EXPECT_EQ(dovInit(), 0); });
    for (std::thread& caller : callers) caller.join();
    EXPECT_EQ(service->take().size(), 4u);
    EXPECT_THAT(log.take(), testing::Each(kDovEntry));
    endService(1);
    EXPECT_EQ(dovInit(), -1);
}

// Another thread's failed call may drop the proxy after a thread has bound and
// before it calls.
TEST_F(BindingTest, proxyDroppedBeforeTheCallIsLogged) {
    service->failing = true;
    std::atomic<bool> done = false;
    std::vector<std::thread> callers;
    for (int i = 0; i < 3; ++i) {
        callers.emplace_back([&done] {
            while (!done) DovRelease(1);
        });
    }
    callers.emplace_back([&done] {
        while (!done) dovInit();
    });
    for (const char* const text : {"DovRelease g_dov_hal is null", "g_dov_hal is null"}) {
        EXPECT_TRUE(eventually(
                [&] {
                    service->take();
                    mLines.clear();
                    return hasLogged(dovError(text));
                },
                std::chrono::seconds(60)))
                << text;
    }
    done = true;
    for (std::thread& caller : callers) caller.join();
}

// A process whose calls keep failing binds again and again, and must not leak.
// The other binding keeps the proxy alive.
TEST_F(BindingTest, repeatedBindingDoesNotLeak) {
    mirxHalclient::mirx_init();
    const auto rebind = [this](int times) {
        for (int i = 0; i < times; ++i) {
            service->failing = true;
            DovRelease(1);
            service->failing = false;
            service->take();
            log.take();
        }
    };
    rebind(1000);
    // Over the driver, in an emulated machine, each takes milliseconds.
    const int times = overDriver() ? 2000 : 10000;
    const Holdings before;
    rebind(times);
    const Holdings after;
#if !__has_feature(address_sanitizer)  // it keeps freed memory and finds leaks itself
    EXPECT_LT(after.resident, before.resident + size_t{256} * 1024);
#endif
    EXPECT_EQ(after.descriptors, before.descriptors);
    ASSERT_EQ(dovInit(), 0);
    log.take();
    endService(2);
    EXPECT_THAT(log.take(), Not(Contains(kDovDeath)))
            << "the death recipient of an earlier binding is still linked";
}
