// Tests of listening registrations and state queries.
#include "tests/support/client_test.h"

using namespace mirxHalclient;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::Pair;

namespace {

using Ids = std::vector<int>;
using Paths = std::vector<std::string>;

const LogLine kDuplicate = error("Same callback interface registered already");
const LogLine kUnknown = error("The callback was not registered before");

LogLine known(int handle) {
    return info("a callback has been unregistered to Mirx HAL handle " + std::to_string(handle));
}

int byId(const Ids& ids) {
    std::list<DovClient::Resource> resources;
    for (const int id : ids) resources.push_back({id, std::nullopt});
    return mirxResListeningRegister(resources, 9, std::make_shared<Heard>());
}

int byPath(const Paths& paths) {
    return mirx_res_listening_register_by_path(paths, 9, std::make_shared<HeardByPath>());
}

int byMap(const Paths& paths) {
    std::map<std::string, std::string> map;
    for (const std::string& path : paths) map[path] = "value";
    return mirx_res_listening_register_map_by_path(map, 9, std::make_shared<HeardByPath>());
}

int thermal(const Ids& ids) {
    return mirxThermalListeningRegister(ids, std::make_shared<Heard>());
}

}  // namespace

class ListeningTest : public ClientTest {};

TEST_F(ListeningTest, registrationSendsItsResources) {
    std::list<DovClient::Resource> resources = {{5, "7"}, {0, "x"}, {6, std::nullopt}};
    service->answer = 21;
    EXPECT_EQ(mirxResListeningRegister(resources, 9, std::make_shared<Heard>()), 21);
    const RecordedCall call = theCall();
    EXPECT_EQ(call.operation, "listeningRegister");
    EXPECT_NE(call.callback, nullptr);
    EXPECT_EQ(call.parcel.toString(),
              control(0, 0, 0, 0, false, 9, {element(5, "7"), element(0, "x"), element(6, "")})
                      .toString());
}

TEST_F(ListeningTest, duplicateListIsNotRegisteredAgain) {
    using Register = std::function<int()>;
    const auto id = [](Ids ids) { return [=] { return byId(ids); }; };
    const auto path = [](Paths p) { return [=] { return byPath(p); }; };
    const auto map = [](Paths p) { return [=] { return byMap(p); }; };
    const auto thermally = [](Ids ids) { return [=] { return thermal(ids); }; };
    const struct {
        const char* name;
        Register first, second;
        bool accepted;
    } cases[] = {
            {"same ids", id({1, 2}), id({1, 2}), false},
            {"ids in another order", id({1, 2}), id({2, 1}), true},
            {"some of the ids", id({1, 2}), id({1}), true},
            {"no ids twice", id({}), id({}), false},
            {"same paths", path({"/a", "/b"}), path({"/a", "/b"}), false},
            {"paths in another order", path({"/a", "/b"}), path({"/b", "/a"}), true},
            {"a list like a map", map({"/a", "/b"}), path({"/a", "/b"}), false},
            {"a map like a list in order", path({"/a", "/b"}), map({"/b", "/a"}), false},
            {"no ids after paths", path({"/a"}), id({}), false},
            {"no paths after ids", id({1}), path({}), false},
            {"an empty map after ids", id({1}), map({}), false},
            {"no paths after thermal", thermally({1}), path({}), false},
            {"ids like thermal ones", thermally({1, 2}), id({1, 2}), false},
            {"other ids than thermal ones", thermally({1, 2}), id({2, 1}), true},
            {"thermal like ids", id({1, 2}), thermally({1, 2}), true},
            {"thermal twice", thermally({1, 2}), thermally({1, 2}), true},
    };
    service->answer = 4;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.first(), 4);
        service->take();
        log.take();
        EXPECT_EQ(c.second(), c.accepted ? 4 : -1);
        EXPECT_EQ(service->take().size(), c.accepted ? 1 : 0);
        const auto lines = clientLines();
        EXPECT_EQ(lines.back() == kDuplicate, !c.accepted);
        mirxResListeningUnRegister(4);
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
    EXPECT_EQ(mirxResListeningUnRegister(5), -2);
    EXPECT_THAT(clientLines(), Contains(known(5)));
    EXPECT_EQ(mirxResListeningUnRegister(5), -2);
    EXPECT_THAT(clientLines(),
                ElementsAre(info("mirx client mirxResListeningUnRegister"), kUnknown));
    const RecordedCall call = service->take().back();
    EXPECT_EQ(call.operation, "listeningUnregister") << "an unknown handle was not sent";
    EXPECT_THAT(call.numbers, ElementsAre(5));
    EXPECT_EQ(byId({1}), -2);
    EXPECT_EQ(byPath({"/a"}), -2);
    EXPECT_EQ(byId({2}), -2);
    EXPECT_EQ(byId({3}), -1) << "the entry of another handle was removed too";
}

TEST_F(ListeningTest, unregisterRemovesEntriesOnlyIfItCalls) {
    ASSERT_EQ(byId({1}), 1);
    service->failing = true;
    log.take();
    EXPECT_EQ(mirxResListeningUnRegister(1), -1);
    EXPECT_THAT(clientLines(), ElementsAre(info("mirx client mirxResListeningUnRegister"), known(1),
                                           failed("mirxResListeningUnRegister")));
    service->failing = false;
    ASSERT_EQ(byId({1}), 1);

    service->failing = true;
    mirx_init();
    service->failing = false;
    undeclare();
    EXPECT_EQ(mirxResListeningUnRegister(1), -1);
    declare();
    EXPECT_EQ(byId({1}), -1) << "the entry was removed without a call to the service";
}

TEST_F(ListeningTest, registrationsOutliveTheService) {
    ASSERT_EQ(byId({1}), 1);
    ASSERT_EQ(byPath({"/a"}), 1);
    service->take();
    endService(1);
    serve();
    log.take();
    EXPECT_EQ(byId({1}), -1);
    EXPECT_EQ(byPath({"/a"}), -1);
    EXPECT_EQ(mirxResListeningUnRegister(1), 1);
    EXPECT_THAT(clientLines(), Contains(known(1)));
    EXPECT_EQ(byId({1}), 1);
}

TEST_F(ListeningTest, thermalEntriesRemainAfterUnregistering) {
    service->answer = 7;
    EXPECT_EQ(thermal({1, 2}), 7);
    const RecordedCall call = theCall();
    EXPECT_EQ(call.operation, "thermalListeningRegister");
    EXPECT_THAT(call.numbers, ElementsAre(1, 2));
    service->answer = -4;
    EXPECT_EQ(mirxThermalListeningUnregister(7), -4);
    EXPECT_THAT(theCall().numbers, ElementsAre(7));
    EXPECT_EQ(byId({1, 2}), -1);
    EXPECT_THAT(clientLines(), Contains(kDuplicate));
    mirxResListeningUnRegister(7);
    EXPECT_EQ(byId({1, 2}), -4);
}

TEST_F(ListeningTest, stateQueryAppendsAndFillsAbsentValues) {
    std::list<DovClient::Resource> wanted = {{5, std::nullopt}, {6, "x"}}, out = {{1, "kept"}};
    MirxRequestData other = element(7, "a,b");
    other.path = "/ignored";
    service->state = {element(5), other, element(-1, "")};
    EXPECT_EQ(mirxResStateRequest(wanted, 9, out), 4);
    EXPECT_THAT(plain(out),
                ElementsAre(Pair(1, "kept"), Pair(5, ""), Pair(7, "a,b"), Pair(-1, "")));
    EXPECT_THAT(clientLines(), Contains(info("mirx client mirxResStateRequest size 4")));
    EXPECT_EQ(theParcel(),
              control(0, 0, 0, 0, false, 9, {element(5, ""), element(6, "x")}).toString());
    service->state = {};
    EXPECT_EQ(mirxResStateRequest(wanted, 9, out), -1);
    EXPECT_EQ(out.size(), 4u);
    EXPECT_THAT(clientLines(), Not(Contains(info("mirx client mirxResStateRequest size 4"))));
}
