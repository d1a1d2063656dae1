// Tests of listening registrations: which are refused, and when they end.
#include "tests/support/client_test.h"

using namespace mirxHalclient;

namespace {

using Numbers = std::vector<int>;

const std::shared_ptr<Heard> kHeard = std::make_shared<Heard>();

// Each registers the numbers: as ids, as the paths "/1", "/2" or as thermal subsystems.
int byId(const Numbers& numbers) {
    std::list<DovClient::Resource> resources;
    for (const int id : numbers) resources.push_back({id, std::nullopt});
    return mirxResListeningRegister(resources, 9, kHeard);
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
