// Tests that calls from many threads neither hang, leak nor get wrong answers while the service is killed many times.
#include <dov/dov.h>
#include <dov/halclient.h>

#include <iostream>
#include <map>
#include <random>
#include <set>
#include <shared_mutex>
#include <thread>
#include <utility>

#include <android-base/thread_annotations.h>

#include "tests/support/holdings.h"
#include "tests/support/operations.h"
#include "tests/support/test_services.h"

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool kMemoryTells = false;  // the sanitizer keeps freed memory, and is slow
constexpr int kSocketKills = 200;
#else
constexpr bool kMemoryTells = true;
constexpr int kSocketKills = 1000;
#endif
constexpr int kEmulatedKills = 200;
constexpr int kCallers = 8;
constexpr size_t kNumbered = 35;
constexpr auto kLongestCall = 60s;

// Compares the answers that callers got with the service's journal. Each call sends a number of
// its own, by which its line in the journal is found. Thread-safe.
class Ledger {
  public:
    // Returns the number of a new call.
    int begin(const Operation& operation) {
        std::lock_guard lock(mMutex);
        const int n = ++mNewest;
        close(slot(n));
        slot(n) = {.n = n, .operation = &operation};
        return n;
    }

    // Records that call `n` has returned.
    void returned(int n, const std::string& outcome) {
        std::lock_guard lock(mMutex);
        Call& call = slot(n);
        const Operation& operation = *call.operation;
        call.outcome = std::atoi(outcome.c_str());
        call.answered = operation.reply != Reply::kOneWay && outcome != operation.failed;
        mAnswered += call.answered;
        compare(call);
    }

    // Records a line of the service's journal.
    void received(const std::string& line) {
        if (line.starts_with(' ') || line.starts_with("callback") || line.starts_with("ended")) {
            return;
        }
        const size_t arrow = line.find(" -> ");
        const int n = numberIn(line.substr(0, arrow));
        if (n == 0) return;
        std::lock_guard lock(mMutex);
        Call& call = slot(n);
        if (call.n != n || call.received) return complain("not called, or twice: " + line);
        mShown.insert(call.operation);
        call.received = true;
        if (arrow != std::string::npos) call.result = std::atoi(line.c_str() + arrow + 4);
        compare(call);
    }

    // Returns what does not agree, and which calls have not returned.
    std::string end() {
        std::lock_guard lock(mMutex);
        for (Call& call : mCalls) close(call);
        for (const auto& [operation, missing] : mMissing) {
            // Some operations send no number.
            if (mShown.count(operation) == 0) continue;
            complain(std::to_string(missing) + " answered, but never received: " + operation->name);
        }
        return mComplaints;
    }

    long calls() const { return mNewest - kFirst; }
    long answered() const { return mAnswered; }
    // The number of answered calls that are in the journal with the same result.
    long agreed() const { return mAgreed; }
    // The number of operations whose calls the journal shows.
    size_t shown() const { return mShown.size(); }

  private:
    struct Call {
        int n = 0;
        const Operation* operation = nullptr;
        std::optional<int> outcome = {};  // as the caller sees it, when the call has returned
        std::optional<int> result = {};  // in the journal
        bool answered = false, received = false;
    };

    // Greater than process ids, opcodes and the service's handles.
    static constexpr int kFirst = 1'500'000'000;

    // The number of the call in a line: the last one, because a one-way call sends a handle first.
    static int numberIn(const std::string& text) {
        char* end = nullptr;
        int found = 0;
        for (const char* at = text.c_str(); *at != '\0'; at = std::max<const char*>(end, at + 1)) {
            const long long number = std::strtoll(at, &end, 0);
            if (number > kFirst && number <= INT32_MAX) found = static_cast<int>(number);
        }
        return found;
    }
    Call& slot(int n) REQUIRES(mMutex) { return mCalls[static_cast<size_t>(n) % mCalls.size()]; }
    void complain(const std::string& text) REQUIRES(mMutex) {
        if (mComplaints.size() < 4000) mComplaints += text + "\n";
    }
    void compare(const Call& call) REQUIRES(mMutex) {
        if (!call.answered || !call.received) return;
        ++mAgreed;
        // A notification has an answer of its own; other operations pass the service's on.
        const std::string name = call.operation->name;
        const bool told = call.operation->reply == Reply::kNumber && call.result &&
                          name.find("Notify") == std::string::npos;
        if (told && call.outcome != call.result) {
            complain(name + ": the caller got " + std::to_string(*call.outcome) +
                     ", the service answered " + std::to_string(*call.result));
        }
    }
    // Ends a call of so long ago that its line in the journal has been read.
    void close(const Call& call) REQUIRES(mMutex) {
        if (call.n == 0) return;
        if (!call.outcome) complain(std::string(call.operation->name) + " has not returned");
        if (call.answered && !call.received) ++mMissing[call.operation];
    }

    std::mutex mMutex;
    std::vector<Call> mCalls GUARDED_BY(mMutex) = std::vector<Call>(1 << 16);  // the newest
    std::set<const Operation*> mShown;
    std::map<const Operation*, int> mMissing;
    std::string mComplaints GUARDED_BY(mMutex);
    std::atomic<int> mNewest = kFirst;
    std::atomic<long> mAnswered = 0, mAgreed = 0;
};

struct Listener : IClientCallback {
    void onCallback(std::list<DovClient::Resource>) override { ++calls; }
    std::atomic<long> calls = 0;
};

void forgetRequests() {
    std::lock_guard lock(request_callback_mutex);
    decltype(request_callbacks)().swap(request_callbacks);
}

}  // namespace

class LoadTest : public BinderTest {
  protected:
    LoadTest() { stopServing(); }

    void makeCalls(unsigned seed) {
        std::minstd_rand random(seed);
        while (true) {
            const std::shared_lock running(mRunning);
            if (mDone) return;
            const Operation& operation = operations()[random() % operations().size()];
            const int n = mLedger.begin(operation);
            mLedger.returned(n, operation.call(n));
            unregister();
        }
    }

    // Listens to changes that the other threads cause, again and again.
    void listen() {
        for (int n = 0;; ++n) {
            const std::shared_lock running(mRunning);
            if (mDone) return;
            // A list that is still registered would be refused, so each differs.
            registerListener({{7, {}}, {-n, {}}}, mListener);
            std::this_thread::sleep_for(1ms);
            unregister();
        }
    }

    void unregister() {
        const int handle = endRegistration();
        if (handle == -1) return;
        std::lock_guard lock(mMutex);
        mRemaining.push_back(handle);
    }

    // Waits until no call is running.
    std::unique_lock<std::shared_timed_mutex> idle() {
        std::unique_lock lock(mRunning, kLongestCall);
        if (lock.owns_lock()) return lock;
        std::cerr << "calls do not return:\n" << mLedger.end() << std::endl;
        std::abort();
    }

    // Binds both bindings to the running service.
    static void bind() {
        EXPECT_TRUE(eventually([] { return dovInit() == 0; }));
        EXPECT_TRUE(eventually([] { return mirxHalclient::mirxPropertySet("load", "1") == 0; }));
    }

    // Runs a service until `during` returns, and kills it.
    void runService(const std::function<void()>& during) {
        ChildProcess simulator(MIRX_SIMULATOR);
        // Calls may arrive before the service says that it serves.
        for (std::string line; !line.starts_with("serving"); mLedger.received(line)) {
            line = simulator.readUntil("");
        }
        std::thread reader([&] {
            try {
                while (true) mLedger.received(simulator.readUntil(""));
            } catch (const std::runtime_error&) {  // the output has ended
            }
        });
        during();
        simulator.signal(SIGKILL);
        reader.join();
        ++mKills;
        forgetRequests();  // by contract, callbacks that the dead service has not called remain
        log.take();
    }

    // Measures the process while both bindings are bound to a new service and no call is running.
    Holdings measure() {
        std::unique_lock<std::shared_timed_mutex> pause;
        runService([&] {
            pause = idle();
            bind();
            forgetRequests();
            pause.unlock();
            std::this_thread::sleep_for(100ms);
            pause = idle();
            EXPECT_TRUE(eventually([] {
                std::lock_guard lock(request_callback_mutex);
                return request_callbacks.empty();
            })) << "a request of a living service was not called back";
        });
        Holdings least;
        runService([&] {
            bind();
            std::lock_guard lock(mMutex);
            for (const int handle : std::exchange(mRemaining, {})) {
                mirxHalclient::mirxResListeningUnRegister(handle);
            }
            // The transport's threads outlive their connections.
            const auto end = Clock::now() + kLongestCall;
            for (int same = 0; same < 20 && Clock::now() < end; ++same) {
                bind();
                std::this_thread::sleep_for(20ms);
                log.take();
                const Holdings now;
                if (now.descriptors != least.descriptors || now.threads != least.threads) same = 0;
                least = now;
            }
            pause.unlock();
        });
        return least;
    }

    std::mutex mMutex;
    // The handles of registrations that a service's death kept from being ended. By contract they
    // remain in the library's registry.
    std::vector<int> mRemaining GUARDED_BY(mMutex);
    int mKills = 0;
    Ledger mLedger;
    std::shared_ptr<Listener> mListener = std::make_shared<Listener>();
    std::shared_timed_mutex mRunning;  // held shared while calling
    std::atomic<bool> mDone = false;
};

// DOV_LOAD_SECONDS sets how long it runs.
TEST_F(LoadTest, killsCauseNoHangNoLeakAndNoWrongAnswer) {
    const char* const asked = getenv("DOV_LOAD_SECONDS");
    const auto time = std::chrono::seconds(asked == nullptr ? 0 : std::stoi(asked));
    // In an emulated machine, and under an emulator, everything is slower.
    const bool emulated = overDriver() || getenv("DOV_EMULATOR") != nullptr;
    const int enough = asked != nullptr ? 10 : emulated ? kEmulatedKills : kSocketKills;
    // In microseconds. A longer run has time for more calls, listeners and callbacks in each life.
    const unsigned longestLife = emulated ? 400'000 : asked != nullptr ? 700'000 : 20'000;

    std::vector<std::thread> callers;
    for (unsigned i = 0; i < kCallers; ++i) callers.emplace_back([this, i] { makeCalls(i + 1); });
    callers.emplace_back([this] { listen(); });
    std::minstd_rand random(1);
    const auto start = Clock::now();
    const auto run = [&](int kills, Clock::time_point end) {
        while (mKills < kills || Clock::now() < end) {
            // A random time, so that the kill hits calls at any point.
            const std::chrono::microseconds life(random() % longestLife);
            runService([life] { std::this_thread::sleep_for(life); });
        }
    };
    run(enough / 5, start + time / 5);  // until all one-time objects exist
    const Holdings fifth = measure();
    run(enough, start + time);
    Holdings last = measure();
    // What the callers' last answers leave varies by some 50 KiB; a leak stays.
    const size_t noise = (heapIsExact() ? size_t{64} : size_t{1024}) * 1024;
    for (int i = 0; i < 3 && last.heap > fifth.heap + noise; ++i) last = measure();
    runService([&] {
        // On a busy machine, a short life may end before a listener is called.
        EXPECT_TRUE(eventually([&] { return mListener->calls > 0; }));
        mDone = true;
        for (std::thread& caller : callers) caller.join();
    });
    std::cout << mLedger.calls() << " calls, " << mLedger.answered()
              << " answered, of which the journal shows " << mLedger.agreed() << "; "
              << mListener->calls << " callbacks received; the service was killed " << mKills
              << " times\nafter a fifth: " << fifth << "\nat the end:    " << last << std::endl;
    EXPECT_EQ(mLedger.end(), "") << "callers and service disagree";
    EXPECT_GE(mLedger.shown(), kNumbered) << "operations that send the number of their call";
    EXPECT_LE(last.descriptors, fifth.descriptors);
    EXPECT_LE(last.deathRecipients, fifth.deathRecipients);
    // The driver's thread pool grows to its full size and stays so.
    const size_t pool = overDriver() ? callers.size() + 3 + kDriverThreads : 0;
    EXPECT_LE(last.threads, std::max(fifth.threads, pool));
    if (!kMemoryTells) return;
    EXPECT_LE(last.heap, fifth.heap + noise);
    // The C library keeps the stacks of the largest number of simultaneous threads. An emulator
    // keeps memory for every thread that ever existed.
    if (getenv("DOV_EMULATOR") == nullptr) {
        EXPECT_LE(last.resident, fifth.resident + size_t{4} * 1024 * 1024);
    }
}
