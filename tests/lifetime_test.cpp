// Calls from a callback's destructor, and registrations that wait for each other.
#include <dov/dov.h>

#include <sys/syscall.h>
#include <unistd.h>

#include <fstream>
#include <latch>
#include <thread>

#include "tests/support/client_test.h"

using namespace mirxHalclient;

namespace {

// A callback whose destructor does what `onDestruction` says.
struct Last : IClientCallback, IClientCallbackByPath {
    explicit Last(std::function<void()> onDestruction) : onDestruction(std::move(onDestruction)) {}
    ~Last() override { onDestruction(); }
    void onCallback(std::list<DovClient::Resource>) override {}
    void onCallback(std::vector<std::string>, std::vector<std::string>) override {}

    std::function<void()> onDestruction;
};

int registerId(int id, const std::shared_ptr<IClientCallback>& callback) {
    std::list<DovClient::Resource> resources = {{id, std::nullopt}};
    return mirxResListeningRegister(resources, 9, callback);
}

bool isSleeping(pid_t thread) {
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    const std::string stat((std::istreambuf_iterator<char>(file)), {});
    const size_t name = stat.rfind(')');
    return name != std::string::npos && stat.compare(name + 2, 1, "S") == 0;
}

}  // namespace

class LifetimeTest : public ClientTest {
  protected:
    // A thread that waits for ever ends the test.
    LifetimeTest() { alarm(100); }
    ~LifetimeTest() override { alarm(0); }
};

TEST_F(LifetimeTest, unregisteredCallbackMayRegister) {
    std::atomic<bool> destroyed = false;
    const auto nested = [&] {
        EXPECT_EQ(mirxResListeningUnRegister(6), 6);
        EXPECT_EQ(registerId(3, nullptr), 6);
        destroyed = true;
    };
    service->answer = 5;
    ASSERT_EQ(registerId(1, std::make_shared<Last>(nested)), 5);
    service->answer = 6;
    ASSERT_EQ(registerId(2, nullptr), 6);
    // The service releases the first callback; a call behind that finds it released.
    std::vector<RecordedCall> calls = service->take();
    calls[0].callback = nullptr;
    calls[1].callback->onCallback({});
    EXPECT_EQ(mirxResListeningUnRegister(5), 6);
    EXPECT_TRUE(eventually([&] { return destroyed.load(); }));
}

// The service calls back and, like the caller, releases the callback before it answers: the
// request's parcel is then the last owner. The destructor makes a call that fails, which needs the
// proxy's lock exclusively.
TEST_F(LifetimeTest, requestedCallbackMayFailACall) {
    std::atomic<int> destroyed = 0;
    const auto last = [&] {
        return std::make_shared<Last>([&] {
            service->whenCalled(nullptr);
            service->failing = true;
            mirx_init();
            service->failing = false;
            ++destroyed;
        });
    };
    std::shared_ptr<IClientCallback> byId;
    std::shared_ptr<IClientCallbackByPath> byPath;
    std::list<DovClient::Resource> none;
    const std::function<int()> requests[] = {
            [&] { return mirxResCtlRequest(-1, 1, none, 0, 0, 2, byId); },
            [&] { return mirxSACtlRequest(-1, 1, 2, 0, 0, 2, byId); },
            [&] {
                return mirx_resctl_request_with_callback_by_path(-1, 1, {}, {}, 0, 0, 2, byPath);
            },
    };
    for (const auto& request : requests) {
        {
            const auto callback = last();
            byId = callback;
            byPath = callback;
        }
        service->whenCalled([&](const std::string&) {
            service->take().back().parcel.callback->onCallback({});
            byId = nullptr;
            byPath = nullptr;
        });
        const int before = destroyed;
        EXPECT_EQ(request(), 1);
        EXPECT_TRUE(eventually([&] { return destroyed == before + 1; }));
        EXPECT_EQ(waitingCallbacks(), 0u);
    }
}

// One registration is held in the service while a second one waits for the registry; then the first
// fails. The second gets its answer, whether it fails or not.
TEST_F(LifetimeTest, registrationOutlivesAFailedOne) {
    for (const bool secondFails : {true, false}) {
        std::latch called(1), answer(1);
        std::atomic<int> calls = 0;
        service->whenCalled([&](const std::string&) {
            if (calls++ > 0) {
                service->failing = secondFails;
                return;
            }
            called.count_down();
            answer.wait();
        });
        log.take();
        std::thread first([] { EXPECT_EQ(registerId(1, nullptr), -1); });
        called.wait();
        std::atomic<pid_t> thread = 0;
        std::atomic<int> handle = 0;
        std::thread second([&] {
            thread = static_cast<pid_t>(syscall(SYS_gettid));
            handle = registerId(2, nullptr);
        });
        std::vector<LogLine> lines;
        EXPECT_TRUE(eventually([&] {
            for (LogLine& line : clientLines()) lines.push_back(std::move(line));
            return lines.size() >= 2 && isSleeping(thread);
        }));
        service->failing = true;
        answer.count_down();
        first.join();
        second.join();
        EXPECT_EQ(handle, secondFails ? -1 : 1);
        EXPECT_EQ(calls, 2) << "a registration was refused without a call";
        service->failing = false;
        service->whenCalled(nullptr);
        mirxResListeningUnRegister(1);
    }
}
