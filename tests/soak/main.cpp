// soak [SECONDS]: eight threads make every call of the library while the service is killed and
// started again every few hundred milliseconds. Nothing may hang, nothing may grow, and what the
// callers were told must be what the service says it has received.
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

// Whether the service's journal tells this call from others: it carries the number.
bool isNumbered(const Operation& operation) {
    const std::string_view name = operation.name;
    return !name.starts_with("mirxDump") && !name.starts_with("mirxHistory") &&
           name != "mirx_init" && name != "dovInit" && name != "mirxResListeningUnRegister" &&
           name != "mirxThermalListeningUnregister" && name != "DovGetHistory" &&
           name != "DovGetPowerConsis" && name != "Dov_fetch_dataset" &&
           name != "DovResStateRequest of the power" && name != "DovNotifyWapper";
}

// What the service must have answered, where the caller hears it.
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
    // Runs the service, one after the other, and notes what each says that it has received.
    void runServices() {
        std::minstd_rand random(1);
        while (!mServicesDone) {
            ChildProcess service(MIRX_SIMULATOR);
            // From its first line: callers may be faster than the one that says it is serving.
            std::thread reader([&] {
                try {
                    while (true) mLedger.received(service.readUntil(""));
                } catch (const std::runtime_error&) {  // its output has ended
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
            // The service will not call these any more.
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

    // Has a listener that is told about changes which the other calls make.
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

    // What the process has while both bindings are bound to a new service and nothing goes on. The
    // transport's threads end a moment after their connections.
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
        std::this_thread::sleep_until(start + time / 5);  // until all that is made once is made
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
                  << counts.heard << " callbacks heard; the service was killed " << counts.kills
                  << " times\nafter a fifth: " << before << "\nat the end:    " << after
                  << std::endl;
        const std::string disagreements = mLedger.disagreements();
        bool good = disagreements.empty() && mLedger.agreed() > 0 && counts.heard > 0;
        if (!disagreements.empty()) {
            std::printf("callers and service disagree:\n%.4000s", disagreements.c_str());
        }
        const auto grown = [&](const char* what, size_t from, size_t to, size_t allowed) {
            if (to <= from + allowed) return;
            std::printf("%s: there are more now\n", what);
            good = false;
        };
        grown("descriptors", before.descriptors, after.descriptors, 0);
        grown("threads", before.threads, after.threads, 0);
        grown("death recipients", before.deathRecipients, after.deathRecipients, 0);
#if !__has_feature(address_sanitizer) && \
        !__has_feature(thread_sanitizer)  // they keep what is freed
        const size_t kept = size_t{heapIsExact() ? 64u : 1024u} * 1024;
        grown("bytes on the heap", before.heap, after.heap, kept);
        grown("bytes in memory", before.resident, after.resident, size_t{4} * 1024 * 1024);
#endif
        std::puts(good ? "soak: good" : "soak: NOT GOOD");
        return good ? 0 : 1;
    }

    Counts counts;
    soak::Ledger mLedger;
    soak::Watchdog mWatchdog{kLongestCall};
    std::shared_mutex mRunning;  // shared by the callers
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
    setenv("DOV_SERVICE_DIR", folder.c_str(), 1);  // for the services
    std::filesystem::copy_file(MIRX_FRAGMENT, folder + "/mirx.xml");
    android::setDefaultServiceManager(hostbinder::SocketServiceManager::make(folder, &error));
    const int result = Soak().run(time);
    std::filesystem::remove_all(folder);
    std::fflush(stdout);
    _exit(result);  // the transport's threads run on
}
