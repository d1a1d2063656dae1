// Tests of listening registrations: which are refused, and when they end.
#include "tests/support/client_test.h"

using namespace mirxHalclient;

namespace {

using Ids = std::vector<int>;
using Paths = std::vector<std::string>;

const std::shared_ptr<Heard> kHeard = std::make_shared<Heard>();

int byId(const Ids& ids) {
    std::list<DovClient::Resource> resources;
    for (const int id : ids) resources.push_back({id, std::nullopt});
    return mirxResListeningRegister(resources, 9, kHeard);
}

int byPath(const Paths& paths) {
    return mirx_res_listening_register_by_path(paths, 9, kHeard);
}

int byMap(const Paths& paths) {
    std::map<std::string, std::string> map;
    for (const std::string& path : paths) map[path] = "value";
    return mirx_res_listening_register_map_by_path(map, 9, kHeard);
}

int thermal(const Ids& ids) {
    return mirxThermalListeningRegister(ids, kHeard);
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
    const struct {
        const char* name;
        std::function<int()> first, second;
        bool accepted;
    } cases[] = {
            {"same ids",
             [] {
                 return byId({1, 2});
             },
             [] {
                 return byId({1, 2});
             },
             false},
            {"ids in another order",
             [] {
                 return byId({1, 2});
             },
             [] {
                 return byId({2, 1});
             },
             true},
            {"some of the ids",
             [] {
                 return byId({1, 2});
             },
             [] { return byId({1}); }, true},
            {"paths in another order",
             [] {
                 return byPath({"/a", "/b"});
             },
             [] {
                 return byPath({"/b", "/a"});
             },
             true},
            {"a list like a map",
             [] {
                 return byMap({"/a", "/b"});
             },
             [] {
                 return byPath({"/a", "/b"});
             },
             false},
            {"a map like a list in order",
             [] {
                 return byPath({"/a", "/b"});
             },
             [] {
                 return byMap({"/b", "/a"});
             },
             false},
            {"no ids after paths", [] { return byPath({"/a"}); }, [] { return byId({}); }, false},
            {"no paths after ids", [] { return byId({1}); }, [] { return byMap({}); }, false},
            {"no paths after thermal", [] { return thermal({1}); }, [] { return byPath({}); },
             false},
            {"ids like thermal ones",
             [] {
                 return thermal({1, 2});
             },
             [] {
                 return byId({1, 2});
             },
             false},
            {"thermal twice",
             [] {
                 return thermal({1, 2});
             },
             [] {
                 return thermal({1, 2});
             },
             true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.first(), 1);
        service->take();
        log.take();
        EXPECT_EQ(c.second(), c.accepted ? 1 : -1);
        EXPECT_EQ(service->take().size(), c.accepted ? 1 : 0);
        EXPECT_EQ(log.text(kClientTag).ends_with("\nE Same callback interface registered already"),
                  !c.accepted);
        mirxResListeningUnRegister(1);
    }
}

TEST_F(ListeningTest, unregisterRemovesEveryEntryWithTheHandle) {
    service->answer = 5;
    byId({1});
    byPath({"/a"});
    thermal({2});
    service->answer = 6;
    byId({3});
    service->answer = -2;
    log.take();
    EXPECT_EQ(mirxResListeningUnRegister(5), -2);
    EXPECT_EQ(log.text(kClientTag), known(5));
    EXPECT_EQ(byId({1}), -2);
    EXPECT_EQ(byPath({"/a"}), -2);
    EXPECT_EQ(byId({2}), -2);
    EXPECT_EQ(byId({3}), -1) << "the entry of another handle was removed too";
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
    ASSERT_EQ(byPath({"/a"}), 1);
    service->take();
    endService(1);
    serve();
    EXPECT_EQ(byId({1}), -1);
    EXPECT_EQ(byPath({"/a"}), -1);
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
