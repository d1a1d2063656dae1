// Calls the library from eight threads while the service is killed again and again: soak [SECONDS]
//
// The service is restarted every few hundred milliseconds. No call may hang, no resource may leak,
// and the answers that callers got must agree with the service's journal.
#include <sys/stat.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <random>
#include <shared_mutex>
#include <thread>
#include <vector>

#include <android/log.h>
#include <dov/dov.h>
#include <dov/halclient.h>

#include "host/services/socket_service_manager.h"
#include "tests/soak/ledger.h"
#include "tests/soak/watchdog.h"
#include "tests/support/child_process.h"
#include "tests/support/holdings.h"
#include "tests/support/operations.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr int kThreads = 8;
constexpr auto kLongestCall = 60s;

// Whether the service's journal shows the number of this call.
bool isNumbered(const Operation& operation) {
    const std::string_view name = operation.name;
    return !name.starts_with("mirxDump") && !name.starts_with("mirxHistory") &&
           name != "mirx_init" && name != "dovInit" && name != "mirxResListeningUnRegister" &&
           name != "mirxThermalListeningUnregister" && name != "DovGetHistory" &&
           name != "DovGetPowerConsis" && name != "Dov_fetch_dataset" &&
           name != "DovResStateRequest of the power" && name != "DovNotifyWapper";
}

// The answer that the service must have given, if the caller gets that answer.
std::optional<std::string> answerTo(const Operation& operation, const std::string& outcome) {
    const std::string_view service = operation.service, name = operation.name;
    const bool told =
            (service == "request" && name != "mirxThermalNotify" && name != "DovNotify") ||
            service.ends_with("Register");
    return told ? std::optional(outcome) : std::nullopt;
}

struct Counts {
    std::atomic<long> calls = 0, answered = 0, kills = 0, heard = 0;
};

struct Listener : IClientCallback {
    explicit Listener(Counts& counts) : counts(counts) {}
    void onCallback(std::list<DovClient::Resource>) override { ++counts.heard; }
    Counts& counts;
};

class Soak {
  public:
    // Runs one service after the other and records the journal of each.
    void runServices() {
        std::minstd_rand random(1);
        while (!mServicesDone) {
            ChildProcess service(MIRX_SIMULATOR);
            // Reads from the first line: calls may arrive before the line "serving" is printed.
            std::thread reader([&] {
                try {
                    while (true) mLedger.received(service.readUntil(""));
                } catch (const std::runtime_error&) {  // the output has ended
                }
            });
            const auto end = Clock::now() + std::chrono::milliseconds(200 + random() % 300);
            while ((Clock::now() < end && !mServicesDone) || mPaused) {
                std::this_thread::sleep_for(5ms);
            }
            service.signal(SIGKILL);
            reader.join();
            ++counts.kills;
            mLedger.serviceEnded();
            // The dead service cannot call these callbacks any more.
            std::lock_guard lock(request_callback_mutex);
            request_callbacks.clear();
        }
    }

    void makeCalls(int slot) {
        std::minstd_rand random(static_cast<unsigned>(slot) + 1);
        while (!mCallsDone) {
            const std::shared_lock running(mRunning);
            const Operation& operation = operations()[random() % operations().size()];
            const int n = ++mNumber;
            mWatchdog.begin(slot, operation.name);
            const std::string outcome = operation.call(n);
            mWatchdog.begin(slot, "the end of a registration");
            endRegistration();
            mWatchdog.begin(slot, nullptr);
            const bool answered = operation.reply != Reply::kOneWay && outcome != operation.failed;
            ++counts.calls;
            counts.answered += answered;
            if (isNumbered(operation)) {
                mLedger.called(n, operation.name, answered, answerTo(operation, outcome));
            }
        }
    }

    // Registers a listener for changes that the other threads cause, again and again.
    void listen(int slot) {
        const auto listener = std::make_shared<Listener>(counts);
        while (!mCallsDone) {
            const std::shared_lock running(mRunning);
            mWatchdog.begin(slot, "listening");
            registerListener(7, listener);
            mWatchdog.begin(slot, nullptr);
            std::this_thread::sleep_for(50ms);
            mWatchdog.begin(slot, "the end of listening");
            endRegistration();
            mWatchdog.begin(slot, nullptr);
        }
    }

    // Measures the process while both bindings are bound to a new service and no call is running.
    // Waits until the figures are stable: the transport's threads outlive their connections.
    Holdings measure() {
        const std::unique_lock idle(mRunning);
        const long kills = counts.kills;
        while (counts.kills == kills) std::this_thread::sleep_for(1ms);
        mPaused = true;
        Holdings least;
        for (int settled = 0; settled < 20;) {
            if (dovInit() != 0) continue;
            mirxHalclient::mirx_init();
            std::this_thread::sleep_for(20ms);
            const Holdings now;
            const bool same = now.descriptors == least.descriptors && now.threads == least.threads;
            settled = same ? settled + 1 : 0;
            least = now;
        }
        mPaused = false;
        return least;
    }

    int run(std::chrono::seconds time) {
        const auto start = Clock::now();
        std::thread services([this] { runServices(); });
        std::vector<std::thread> callers;
        for (int slot = 0; slot < kThreads; ++slot) {
            callers.emplace_back([this, slot] { makeCalls(slot); });
        }
        callers.emplace_back([this] { listen(kThreads); });
        std::this_thread::sleep_until(start + time / 5);  // until all one-time objects exist
        const Holdings before = measure();
        std::this_thread::sleep_until(start + time);
        const Holdings after = measure();
        mCallsDone = true;
        for (std::thread& caller : callers) caller.join();
        mServicesDone = true;
        services.join();
        return report(before, after);
    }

  private:
    int report(const Holdings& before, const Holdings& after) const {
        std::cout << counts.calls << " calls, " << counts.answered
                  << " answered, of which the journal shows " << mLedger.agreed() << "; "
                  << counts.heard << " callbacks received; the service was killed " << counts.kills
                  << " times\nafter a fifth: " << before << "\nat the end:    " << after
                  << std::endl;
        const std::string disagreements = mLedger.disagreements();
        bool good = disagreements.empty() && mLedger.agreed() > 0 && counts.heard > 0;
        if (!disagreements.empty()) {
            std::printf("callers and service disagree:\n%.4000s", disagreements.c_str());
        }
        const auto grown = [&](const char* what, size_t from, size_t to, size_t allowed) {
            if (to <= from + allowed) return;
            std::printf("%s have leaked\n", what);
            good = false;
        };
        grown("descriptors", before.descriptors, after.descriptors, 0);
        grown("threads", before.threads, after.threads, 0);
        grown("death recipients", before.deathRecipients, after.deathRecipients, 0);
#if !__has_feature(address_sanitizer) && !__has_feature(thread_sanitizer)  // they keep freed memory
        const size_t kept = size_t{heapIsExact() ? 64u : 1024u} * 1024;
        grown("bytes on the heap", before.heap, after.heap, kept);
        grown("bytes in memory", before.resident, after.resident, size_t{4} * 1024 * 1024);
#endif
        std::puts(good ? "soak: passed" : "soak: FAILED");
        return good ? 0 : 1;
    }

    Counts counts;
    soak::Ledger mLedger;
    soak::Watchdog mWatchdog{kLongestCall};
    std::shared_mutex mRunning;  // held shared while calling
    std::atomic<int> mNumber = soak::Ledger::kFirstNumber;
    std::atomic<bool> mCallsDone = false, mServicesDone = false, mPaused = false;
};

}  // namespace

int main(int argc, char** argv) {
    const auto time = std::chrono::seconds(argc > 1 ? std::atoi(argv[1]) : 600);
    if (time <= 0s) {
        std::fputs("usage: soak [SECONDS]\n", stderr);
        return 2;
    }
    __android_log_set_logger([](const __android_log_message*) {});
    std::string folder = std::filesystem::temp_directory_path() / "dov-soak-XXXXXX";
    std::string error;
    if (mkdtemp(folder.data()) == nullptr) return 1;
    setenv("DOV_SERVICE_DIR", folder.c_str(), 1);  // for the child processes
    std::filesystem::copy_file(MIRX_FRAGMENT, folder + "/mirx.xml");
    android::setDefaultServiceManager(hostbinder::SocketServiceManager::make(folder, &error));
    const int result = Soak().run(time);
    std::filesystem::remove_all(folder);
    std::fflush(stdout);
    _exit(result);  // the transport's threads are still running
}
