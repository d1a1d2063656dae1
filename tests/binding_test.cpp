// Tests of the two bindings: how they bind, drop their proxies and bind again.
#include <dov/dov.h>
#include <dov/halclient.h>

#include <dlfcn.h>

#include <latch>
#include <shared_mutex>
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

// What this thread does once, after it has released a lock that it held shared.
thread_local std::function<void()> gAfterUnlock;

}  // namespace

// Overrides the C++ library's function, so that threads can meet between two locks.
#pragma GCC visibility push(default)
void std::shared_timed_mutex::unlock_shared() {
#pragma GCC visibility pop
    static const auto real = reinterpret_cast<void (*)(shared_timed_mutex*)>(
            dlsym(RTLD_NEXT, "_ZNSt3__118shared_timed_mutex13unlock_sharedEv"));
    real(this);
    if (const auto then = std::exchange(gAfterUnlock, nullptr)) then();
}

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

// A thread logs this line, with a 1, when another thread binds after it has found no proxy. Callers
// depend on the line.
TEST_F(BindingTest, secondThreadLogsAndUsesTheBoundProxy) {
    std::latch foundNone(2);
    const auto init = [&] {
        gAfterUnlock = [&] { foundNone.arrive_and_wait(); };
        mirxHalclient::mirx_init();
    };
    std::thread first(init), second(init);
    first.join();
    second.join();
    EXPECT_EQ(services().waits, 1);
    EXPECT_EQ(service->take().size(), 2u);
    EXPECT_THAT(log.take(),
                testing::UnorderedElementsAre(kClientEntry, kClientEntry,
                                              clientError("Mirx is not declared, "
                                                          "AServiceManager_isDeclared:1")));
}

// The event interface binds again in that case. Callers depend on it.
TEST_F(BindingTest, secondThreadReplacesTheBoundProxy) {
    std::latch foundNone(2);
    const auto init = [&] {
        gAfterUnlock = [&] { foundNone.arrive_and_wait(); };
        EXPECT_EQ(dovInit(), 0);
    };
    std::thread first(init), second(init);
    first.join();
    second.join();
    EXPECT_EQ(services().declarationChecks, 2);
    EXPECT_EQ(service->take().size(), 2u);
    EXPECT_THAT(log.take(), ElementsAre(kDovEntry, kDovEntry));
    endService(1);
    EXPECT_EQ(dovInit(), -1);
}

// Another thread's failed call may drop the proxy after a thread has bound and before it calls.
TEST_F(BindingTest, proxyDroppedBeforeTheCallIsLogged) {
    const auto drop = [this] {
        service->failing = true;
        std::thread(initEvents).join();
        service->failing = false;
        log.take();
    };
    for (const bool init : {true, false}) {
        ASSERT_EQ(dovInit(), 0);
        gAfterUnlock = drop;
        if (init) EXPECT_EQ(dovInit(), -1);
        if (!init) DovRelease(1);
        EXPECT_THAT(log.take(), ElementsAre(dovError(init ? "g_dov_hal is null"
                                                          : "DovRelease g_dov_hal is null")));
    }
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
