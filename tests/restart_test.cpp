// The service killed and started again, many times, under every kind of caller: nothing hangs and
// nothing grows.
#include <dov/dov.h>
#include <dov/halclient.h>

#include <atomic>
#include <iostream>
#include <random>
#include <thread>

#include "tests/support/holdings.h"
#include "tests/support/test_services.h"

using namespace mirxHalclient;

namespace {

#if defined(__SANITIZE_ADDRESS__) || __has_feature(address_sanitizer) || \
        __has_feature(thread_sanitizer)
// The sanitizer keeps what is freed, and is slow.
constexpr bool kMemoryTells = false;
constexpr int kSocketKills = 200;
#else
constexpr bool kMemoryTells = true;
constexpr int kSocketKills = 1000;
#endif
constexpr int kEmulatedKills = 200;
// How long the service lives at the most, in microseconds.
constexpr unsigned kLife = 20'000;
constexpr unsigned kEmulatedLife = 400'000;

// The driver is that of an emulated machine, and the program may be emulated itself: everything
// takes longer.
bool emulated() {
    return overDriver() || getenv("DOV_EMULATOR") != nullptr;
}

struct Counting : public IClientCallback {
    void onCallback(std::list<DovClient::Resource>) override { ++calls; }
    std::atomic<int> calls = 0;
};

}  // namespace

class RestartTest : public BinderTest {
  protected:
    RestartTest() { stopServing(); }

    // Calls through both bindings until `mDone`; each result must be one that the call can have.
    void callEvents() {
        const int32_t handle = DovResAcquire({{0x01010010, "1"}}, "p", "i", 0);
        expectOneOf(handle > 0 || handle == -1, "DovResAcquire", handle);
        if (handle > 0) ++mAnswered;
        DovRelease(handle);
        const int init = dovInit();
        expectOneOf(init == 0 || init == -1 || init == -2, "dovInit", init);
        const int32_t oneWay = DovEventAcquireOneWay(1, "p", "i", 1, {});
        expectOneOf(oneWay >= -1, "DovEventAcquireOneWay", oneWay);
    }
    void callClient(const std::shared_ptr<IClientCallback>& callback) {
        std::list<DovClient::Resource> resources = {{0x01010010, "2"}};
        mirx_init();
        const int handle = mirxResCtlRequest(-1, 1, resources, 0, 0, 2, callback);
        expectOneOf(handle > 0 || handle == -1, "mirxResCtlRequest", handle);
        const int released = mirxResCtlRelease(handle);
        expectOneOf(released == 0 || released == -1, "mirxResCtlRelease", released);
        const int state = mirxResStateRequest(resources, 1, resources);
        expectOneOf(state >= -1, "mirxResStateRequest", state);
    }
    void listen(int opcode, const std::shared_ptr<IClientCallback>& callback) {
        std::list<DovClient::Resource> resources = {{0x01010010, ""}, {opcode, ""}};
        const int handle = mirxResListeningRegister(resources, 1, callback);
        expectOneOf(handle >= -1, "mirxResListeningRegister", handle);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        if (handle > 0) mirxResListeningUnRegister(handle);
    }
    void expectOneOf(bool defined, const char* call, int result) {
        if (!defined) ADD_FAILURE() << call << " gave " << result;
    }

    // Threads call until the service has been killed `kills` times; then all of them end.
    void killUnderLoad(int kills) {
        auto simulator = startSimulator();
        mDone = false;
        std::vector<std::thread> callers;
        const auto repeat = [&](auto call) {
            callers.emplace_back([this, call] {
                while (!mDone) call();
            });
        };
        for (int i = 0; i < 3; ++i) repeat([this] { callEvents(); });
        for (int i = 0; i < 2; ++i) repeat([this] { callClient(mCallback); });
        for (int i = 0; i < 2; ++i) repeat([this, i] { listen(i, mCallback); });
        const unsigned life = emulated() ? kEmulatedLife : kLife;
        std::minstd_rand random(static_cast<unsigned>(kills));
        for (int kill = 0; kill < kills; ++kill) {
            // At whatever point its callers are.
            std::this_thread::sleep_for(std::chrono::microseconds(random() % life));
            simulator->signal(SIGKILL);
            ASSERT_EQ(simulator->wait(), -SIGKILL);
            simulator = startSimulator();
            log.take();
        }
        mDone = true;
        for (std::thread& caller : callers) caller.join();
        // What a dead service has not called back waits for it, as callers know.
        {
            std::lock_guard lock(request_callback_mutex);
            decltype(request_callbacks)().swap(request_callbacks);
        }
        // The calls that came last may have met the service that was killed last.
        EXPECT_TRUE(eventually([] { return DovEventAcquire(1, "p", "i", 1, {}) > 0; }));
        mirx_init();
        std::list<DovClient::Resource> resources = {{0x01010010, "2"}};
        EXPECT_TRUE(eventually([&] { return mirxResCtlRequest(1, resources, 1) > 0; }));
        log.take();
    }

    std::shared_ptr<Counting> mCallback = std::make_shared<Counting>();
    std::atomic<bool> mDone = false;
    std::atomic<int> mAnswered = 0;
};

TEST_F(RestartTest, nothingHangsAndNothingGrows) {
    const int kills = emulated() ? kEmulatedKills : kSocketKills;
    killUnderLoad(kills / 5);  // until everything that is made once is there
    const Holdings before;
    killUnderLoad(kills - kills / 5);
    // What the last service held of this process goes when its death has been noticed.
    // The driver's pool of threads grows to its full size and stays.
    const size_t threads = std::max(before.threads, overDriver() ? size_t{2 + kDriverThreads} : 0);
    EXPECT_TRUE(eventually([&] {
        const Holdings now;
        return now.threads <= threads && now.descriptors <= before.descriptors;
    }));
    const Holdings after;
    std::cout << "killed " << kills << " times; " << mAnswered << " acquisitions answered, "
              << mCallback->calls << " callbacks\n  after " << kills / 5 << " kills: " << before
              << "\n  after " << kills << " kills: " << after << std::endl;
    EXPECT_LE(after.descriptors, before.descriptors);
    EXPECT_LE(after.threads, threads);
    EXPECT_LE(after.deathRecipients, before.deathRecipients);
    // There was a load; how much of one is the machine's affair.
    EXPECT_GT(mAnswered, kills / 10);
    EXPECT_GT(mCallback->calls, kills / 10);
    if (!kMemoryTells) return;
    // Were an object left behind by each kill, it would be more.
    const auto later = static_cast<size_t>(kills - kills / 5);
    const size_t kept = heapIsExact() ? 64 * later : size_t{64} * 1024;
    EXPECT_LT(after.heap, before.heap + kept);
    // The C library keeps the stacks of as many threads as there were at once. An emulator's memory
    // is not the program's: it keeps some for each thread that there ever was.
    if (getenv("DOV_EMULATOR") == nullptr) {
        EXPECT_LT(after.resident, before.resident + size_t{16} * 1024 * 1024);
    }
}

TEST_F(RestartTest, aCallAndItsAnswer) {
    const auto simulator = startSimulator();
    const int32_t handle = DovEventAcquire(1, "p", "i", 0, {});
    constexpr int kCalls = 1000;
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < kCalls; ++i) DovRelease(handle);
    const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - start;
    std::cout << "one call and its answer: " << time.count() / kCalls << " us" << std::endl;
}
