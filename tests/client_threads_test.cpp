// Tests the low-level client's shared state with many threads.
#include "tests/support/client_test.h"

#include <shared_mutex>
#include <thread>

using namespace mirxHalclient;

class ClientThreadsTest : public ClientTest {};

TEST_F(ClientThreadsTest, requestsCallbacksAndListenersRunInParallel) {
    constexpr int kThreads = 4, kRounds = 50;
    service->counting = true;
    const auto heard = std::make_shared<Heard>();
    const auto heardByPath = std::make_shared<HeardByPath>();
    std::atomic<int> calls = 0;
    // Calls back each new request once, whichever thread made it.
    const auto callBack = [&] {
        for (const RecordedCall& call : service->take()) {
            if (!call.parcel.callback) continue;
            ++calls;
            call.parcel.callback->onCallback({pathElement("/a", "1")});
        }
    };
    service->whenCalled([&](const std::string& operation) {
        if (operation == "request") callBack();
    });
    // Retries: the call fails if another thread has just dropped the proxy.
    const auto unregister = [](int handle) {
        while (mirxResListeningUnRegister(handle) == -1) {
        }
    };
    // Thermal registration takes no lock, so callers must not run it in parallel with others.
    std::shared_mutex thermal;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            std::list<DovClient::Resource> resources = {{t + 1, "1"}};
            for (int round = 0; round < kRounds; ++round) {
                mirxResCtlRequest(-1, 1, resources, 0, 0, 2, heard);
                mirx_resctl_request_with_callback_by_path(-1, 1, {"/a"}, {"1"}, 0, 0, 2,
                                                          heardByPath);
                std::shared_lock lock(thermal);
                const int byId = mirxResListeningRegister(resources, 2, heard);
                const int byPath = mirx_res_listening_register_by_path({"/" + std::to_string(t)}, 2,
                                                                       heardByPath);
                unregister(byId);
                unregister(byPath);
            }
        });
    }
    threads.emplace_back([&] {
        for (int round = 0; round < kRounds; ++round) {
            std::lock_guard lock(thermal);
            const int handle = mirxThermalListeningRegister({round + 1000}, heard);
            mirxThermalListeningUnregister(handle);
            unregister(handle);
        }
    });
    threads.emplace_back([&] {
        for (int round = 0; round < kRounds; ++round) {
            service->failing = true;
            mirx_init();
            service->failing = false;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    for (std::thread& thread : threads) thread.join();
    callBack();

    EXPECT_EQ(calls, static_cast<int>(heard->take().size() + heardByPath->take().size()));
    EXPECT_GT(calls, kThreads * kRounds);
    EXPECT_EQ(waitingCallbacks(), 0u);
    service->whenCalled(nullptr);
    for (int t = 0; t < kThreads; ++t) {
        std::list<DovClient::Resource> resources = {{t + 1, "1"}};
        EXPECT_NE(mirxResListeningRegister(resources, 2, heard), -1) << "an entry was not removed";
    }
}
