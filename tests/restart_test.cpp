// Tests that calls do not hang or leak while the service is killed and restarted many times.
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
// The sanitizer keeps freed memory, and is slow.
constexpr bool kMemoryTells = false;
constexpr int kSocketKills = 200;
#else
constexpr bool kMemoryTells = true;
constexpr int kSocketKills = 1000;
#endif
constexpr int kEmulatedKills = 200;
// The longest life of a service, in microseconds.
constexpr unsigned kLife = 20'000;
constexpr unsigned kEmulatedLife = 400'000;

// Whether everything is slower: the driver is tested in an emulated machine, and the program may
// run under an emulator.
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

    // One round of calls through the event interface. Checks that each result is a valid one.
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
        if (!defined) ADD_FAILURE() << call << " returned " << result;
    }

    // Runs calling threads until the service has been killed `kills` times.
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
            // A random time, so that the kill hits calls at any point.
            std::this_thread::sleep_for(std::chrono::microseconds(random() % life));
            simulator->signal(SIGKILL);
            ASSERT_EQ(simulator->wait(), -SIGKILL);
            simulator = startSimulator();
            log.take();
        }
        mDone = true;
        for (std::thread& caller : callers) caller.join();
        // Callbacks that the dead service has not called remain; this is documented behaviour.
        {
            std::lock_guard lock(request_callback_mutex);
            decltype(request_callbacks)().swap(request_callbacks);
        }
        // The last calls may have bound to the last killed service.
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

TEST_F(RestartTest, restartsCauseNoHangAndNoLeak) {
    const int kills = emulated() ? kEmulatedKills : kSocketKills;
    killUnderLoad(kills / 5);  // until all one-time objects exist
    const Holdings before;
    killUnderLoad(kills - kills / 5);
    // The last service's connections close when its death is noticed. The driver's thread pool
    // grows to its full size and stays so.
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
    // Proves that there was a load. Its size depends on the machine.
    EXPECT_GT(mAnswered, kills / 10);
    EXPECT_GT(mCallback->calls, kills / 10);
    if (!kMemoryTells) return;
    // Less than one leaked object for each kill.
    const auto later = static_cast<size_t>(kills - kills / 5);
    const size_t kept = heapIsExact() ? 64 * later : size_t{64} * 1024;
    EXPECT_LT(after.heap, before.heap + kept);
    // The C library keeps the stacks of the largest number of simultaneous threads. An emulator
    // keeps memory for every thread that ever existed.
    if (getenv("DOV_EMULATOR") == nullptr) {
        EXPECT_LT(after.resident, before.resident + size_t{16} * 1024 * 1024);
    }
}

TEST_F(RestartTest, durationOfACall) {
    const auto simulator = startSimulator();
    const int32_t handle = DovEventAcquire(1, "p", "i", 0, {});
    constexpr int kCalls = 300;  // as many as the pipe of the journal holds
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < kCalls; ++i) DovRelease(handle);
    const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - start;
    std::cout << "one call and its answer: " << time.count() / kCalls << " us" << std::endl;
}
