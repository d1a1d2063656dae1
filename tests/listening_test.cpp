// Tests of listening registrations: which are refused, when they end, and how they wait.
#include <sys/syscall.h>
#include <unistd.h>

#include <fstream>
#include <latch>
#include <thread>

#include "tests/support/client_test.h"

using namespace mirxHalclient;

namespace {

using Numbers = std::vector<int>;

const std::shared_ptr<Heard> kHeard = std::make_shared<Heard>();

// Each registers the numbers: as ids, as the paths "/1", "/2" or as thermal subsystems.
int byId(const Numbers& numbers, const std::shared_ptr<Heard>& heard) {
    std::list<DovClient::Resource> resources;
    for (const int id : numbers) resources.push_back({id, std::nullopt});
    return mirxResListeningRegister(resources, 9, heard);
}
int byId(const Numbers& numbers) {
    return byId(numbers, kHeard);
}
int byPath(const Numbers& numbers) {
    std::vector<std::string> paths;
    for (const int number : numbers) paths.push_back("/" + std::to_string(number));
    return mirx_res_listening_register_by_path(paths, 9, kHeard);
}
int byMap(const Numbers& numbers) {
    std::map<std::string, std::string> map;
    for (const int number : numbers) map["/" + std::to_string(number)] = "value";
    return mirx_res_listening_register_map_by_path(map, 9, kHeard);
}
int thermal(const Numbers& numbers) {
    return mirxThermalListeningRegister(numbers, kHeard);
}

// The log of mirxResListeningUnRegister if the registry knows the handle.
std::string known(int handle) {
    return "I mirx client mirxResListeningUnRegister\n"
           "I a callback has been unregistered to Mirx HAL handle " +
           std::to_string(handle);
}

bool isSleeping(pid_t thread) {
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    const std::string stat((std::istreambuf_iterator<char>(file)), {});
    const size_t name = stat.rfind(')');
    return name != std::string::npos && stat.compare(name + 2, 1, "S") == 0;
}

}  // namespace

class ListeningTest : public ClientTest {
  protected:
    // Removes the registrations that a test has left.
    ~ListeningTest() override {
        for (int handle = -2; handle < 7; ++handle) mirxResListeningUnRegister(handle);
    }
};

TEST_F(ListeningTest, duplicateListIsNotRegisteredAgain) {
    struct Registration {
        int (*add)(const Numbers&);
        Numbers numbers;
    };
    const struct {
        Registration first, second;
        bool accepted;
    } cases[] = {
            {{byId, {1, 2}}, {byId, {1, 2}}, false},
            {{byId, {1, 2}}, {byId, {2, 1}}, true},
            {{byId, {1, 2}}, {byId, {1}}, true},
            {{byPath, {1, 2}}, {byPath, {2, 1}}, true},
            {{byMap, {2, 1}}, {byPath, {1, 2}}, false},
            {{byPath, {1, 2}}, {byMap, {2, 1}}, false},
            {{byPath, {1}}, {byId, {}}, false},
            {{byId, {1}}, {byMap, {}}, false},
            {{thermal, {1}}, {byPath, {}}, false},
            {{thermal, {1, 2}}, {byId, {1, 2}}, false},
            {{thermal, {1, 2}}, {thermal, {1, 2}}, true},
    };
    for (const auto& c : cases) {
        const auto& [first, second, accepted] = c;
        SCOPED_TRACE("row " + std::to_string(&c - cases));
        EXPECT_EQ(first.add(first.numbers), 1);
        service->take();
        log.take();
        EXPECT_EQ(second.add(second.numbers), accepted ? 1 : -1);
        EXPECT_EQ(service->take().size(), accepted ? 1 : 0);
        EXPECT_EQ(log.text(kClientTag).ends_with("Same callback interface registered already"),
                  !accepted);
        mirxResListeningUnRegister(1);
    }
}

TEST_F(ListeningTest, unregisterRemovesEveryEntryWithTheHandle) {
    service->answer = 5;
    byId({1});
    byPath({1});
    thermal({2});
    service->answer = 6;
    byId({3});
    service->answer = -2;
    log.take();
    EXPECT_EQ(mirxResListeningUnRegister(5), -2);
    EXPECT_EQ(log.text(kClientTag), known(5));
    EXPECT_EQ(mirxResListeningUnRegister(5), -2);
    EXPECT_THAT(log.text(kClientTag), testing::HasSubstr("was not registered before"));
    EXPECT_EQ(byId({1}), -2);
    EXPECT_EQ(byPath({1}), -2);
    EXPECT_EQ(byId({2}), -2);
    EXPECT_EQ(byId({3}), -1) << "the entry of another handle was removed too";
    log.take();
    EXPECT_EQ(mirxResListeningUnRegister(-2), -2);
    EXPECT_EQ(log.text(kClientTag), known(-2)) << "no entry for a handle below zero";
}

TEST_F(ListeningTest, unregisterRemovesEntriesOnlyIfItCalls) {
    ASSERT_EQ(byId({1}), 1);
    undeclare();
    service->failing = true;
    mirx_init();
    EXPECT_EQ(mirxResListeningUnRegister(1), -1);
    declare();
    service->failing = false;
    EXPECT_EQ(byId({1}), -1) << "the entry was removed without a call to the service";

    service->failing = true;
    log.take();
    EXPECT_EQ(mirxResListeningUnRegister(1), -1);
    EXPECT_EQ(log.text(kClientTag),
              known(1) + "\nE mirxResListeningUnRegister() failed: mirx HAL service not available");
    service->failing = false;
    EXPECT_EQ(byId({1}), 1);
}

TEST_F(ListeningTest, registrationsOutliveTheService) {
    ASSERT_EQ(byId({1}), 1);
    ASSERT_EQ(byPath({1}), 1);
    service->take();
    endService(1);
    serve();
    EXPECT_EQ(byId({1}), -1);
    EXPECT_EQ(byPath({1}), -1);
    log.take();
    EXPECT_EQ(mirxResListeningUnRegister(1), 1);
    EXPECT_EQ(log.text(kClientTag), known(1));
    EXPECT_EQ(byId({1}), 1);
}

TEST_F(ListeningTest, thermalEntriesRemainAfterUnregistering) {
    service->counting = true;
    EXPECT_EQ(thermal({1, 2}), 2);
    EXPECT_EQ(mirxThermalListeningUnregister(2), 3);
    EXPECT_EQ(byId({1, 2}), -1);
    log.take();
    EXPECT_EQ(mirxResListeningUnRegister(2), 4);
    EXPECT_EQ(log.text(kClientTag), known(2));
    EXPECT_EQ(byId({1, 2}), 5);
}

TEST_F(ListeningTest, unregisteredCallbackMayRegister) {
    std::atomic<bool> ended = false;
    std::shared_ptr<Heard> callback(new Heard, [&](Heard* last) {
        delete last;
        EXPECT_EQ(mirxResListeningUnRegister(6), 6);
        EXPECT_EQ(byId({3}), 6);
        ended = true;
    });
    service->answer = 5;
    ASSERT_EQ(byId({1}, std::exchange(callback, nullptr)), 5);
    service->answer = 6;
    ASSERT_EQ(byId({2}), 6);
    // The service releases the first callback; a call behind that finds it released.
    std::vector<RecordedCall> calls = service->take();
    calls[0].callback = nullptr;
    calls[1].callback->onCallback({});
    EXPECT_EQ(mirxResListeningUnRegister(5), 6);
    EXPECT_TRUE(eventually([&] { return ended.load(); }));
}

// One registration is held in the service while a second one waits for the registry; then the first
// fails. The second gets its answer, whether it fails or not.
TEST_F(ListeningTest, registrationOutlivesAFailedOne) {
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
        std::thread first([] { EXPECT_EQ(byId({1}), -1); });
        called.wait();
        std::atomic<pid_t> thread = 0;
        std::thread second([&] {
            thread = static_cast<pid_t>(syscall(SYS_gettid));
            EXPECT_EQ(byId({2}), secondFails ? -1 : 1);
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
        EXPECT_EQ(calls, 2) << "a registration was refused without a call";
        service->failing = false;
        service->whenCalled(nullptr);
        mirxResListeningUnRegister(1);
    }
}
