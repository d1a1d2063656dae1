// Tests of the path-addressed operations: what they send, reject and return.
#include <climits>

#include "tests/support/client_test.h"

using namespace mirxHalclient;
using testing::ElementsAre;
using testing::Pair;

namespace {

using Texts = std::vector<std::string>;
using TextMap = std::map<std::string, std::string>;

std::string tagged(MirxRequestParcel parcel) {
    parcel.stringList = {{"zdbdebug"}};
    return parcel.toString();
}

}  // namespace

class ByPathTest : public ClientTest {
  protected:
    std::shared_ptr<IClientCallbackByPath> callback = std::make_shared<HeardByPath>();
};

TEST_F(ByPathTest, markerReplacesTheStringList) {
    MirxRequestParcel parcel;
    parcel.stringList = {{"a", std::nullopt, "b"}};
    mirx_add_zdbdebug_for_request_parcel(parcel);
    EXPECT_EQ(parcel.toString(), tagged({}));
}

TEST_F(ByPathTest, controlRequestsSendPathsWithTheirValues) {
    const struct {
        int handle;
        long duration;
        Texts paths, values;
        int arg4, flag, pid;
        MirxRequestParcel sent;
    } cases[] = {
            {-1, 1000, {}, {}, -1, -1, 1234, control(1, -1, 1000, -1, false, 1234, {})},
            {5,
             -1,
             {"/b", "/a"},
             {"2", ""},
             3,
             1,
             4,
             control(1, 5, -1, 3, true, 4, {pathElement("/b", "2"), pathElement("/a", "")})},
            {5,
             LONG_MAX,
             {""},
             {"1"},
             3,
             0,
             4,
             control(1, 5, LONG_MAX, 3, false, 4, {pathElement("", "1")})},
            {5,
             LONG_MIN,
             {"/a"},
             {"1"},
             3,
             7,
             4,
             control(1, 5, LONG_MIN, 3, true, 4, {pathElement("/a", "1")})},
    };
    service->answer = -6;
    for (const auto& c : cases) {
        EXPECT_EQ(mirx_resctl_request_by_path(c.handle, c.duration, c.paths, c.values, c.arg4,
                                              c.flag, c.pid),
                  -6);
        EXPECT_EQ(theParcel(), tagged(c.sent));
        EXPECT_EQ(mirx_resctl_request_with_callback_by_path(c.handle, c.duration, c.paths, c.values,
                                                            c.arg4, c.flag, c.pid, callback),
                  -6);
        EXPECT_EQ(theParcel(), tagged(c.sent));
    }
}

TEST_F(ByPathTest, controlRequestsRejectListsOfDifferentLength) {
    const std::pair<Texts, Texts> cases[] = {{{"/a"}, {}}, {{}, {"1"}}, {{"/a"}, {"1", "2"}}};
    for (const auto& [paths, values] : cases) {
        EXPECT_EQ(mirx_resctl_request_by_path(-1, 1, paths, values, 0, 0, 2), -1);
        EXPECT_EQ(
                mirx_resctl_request_with_callback_by_path(-1, 1, paths, values, 0, 0, 2, callback),
                -1);
        EXPECT_THAT(
                log.take(),
                ElementsAre(info("mirx client mirx_resctl_request"),
                            error("mirx_resctl_request ERROR: size unmatched for paths and value "),
                            info("mirx client mirx_resctl_request_with_callback"),
                            error("mirx client mirx_resctl_request ERROR: size unmatched for id "
                                  "and value ")));
    }
    EXPECT_TRUE(service->take().empty());
    EXPECT_EQ(waitingCallbacks(), 0u);
}

TEST_F(ByPathTest, stateQueryByListAppendsTheValues) {
    const struct {
        Texts paths, values;
        std::vector<MirxRequestData> sent;
    } cases[] = {
            {{"/a", "/b"}, {}, {pathElement("/a"), pathElement("/b")}},
            {{"/a", "/b"}, {"1", ""}, {pathElement("/a", "1"), pathElement("/b", "")}},
            {{"/a", "/b"}, {"1"}, {pathElement("/a"), pathElement("/b")}},
            {{"/a"}, {"1", "2"}, {pathElement("/a")}},
            {{}, {"1"}, {}},
    };
    service->state = {pathElement("/b", "7"), pathElement("/a"), element(5, "8")};
    for (const auto& c : cases) {
        Texts out = {"kept"};
        EXPECT_EQ(mirx_res_state_request_by_path(c.paths, c.values, 9, out), 4);
        EXPECT_THAT(out, ElementsAre("kept", "7", "", "8"));
        EXPECT_EQ(theParcel(), tagged(control(0, 0, 0, 0, false, 9, c.sent)));
    }
    service->state = {};
    Texts out = {"kept"};
    EXPECT_EQ(mirx_res_state_request_by_path({"/a"}, {}, 9, out), -1);
    EXPECT_THAT(out, ElementsAre("kept"));
}

TEST_F(ByPathTest, stateQueryByMapOverwritesOnlyAnsweredPaths) {
    service->state = {pathElement("/b", "7"), pathElement("/c"), element(5, "8"),
                      pathElement("/d", ""), pathElement("/b", "9")};
    TextMap out = {{"/a", "kept"}, {"/b", "old"}};
    EXPECT_EQ(mirx_res_state_request_map_by_path({{"/z", "2"}, {"/y", ""}}, 9, out), 3);
    EXPECT_THAT(out, ElementsAre(Pair("/a", "kept"), Pair("/b", "9"), Pair("/d", "")));
    EXPECT_EQ(theParcel(), tagged(control(0, 0, 0, 0, false, 9,
                                          {pathElement("/y", ""), pathElement("/z", "2")})));
    EXPECT_THAT(clientLines(),
                ElementsAre(info("mirx client mirx_res_state_request_map"),
                            error("res_Path: /b, res_Value:7"), error("res_Path: /d, res_Value:"),
                            error("res_Path: /b, res_Value:9"),
                            info("mirx client mirx_res_state_request_map size 3")));
    service->state = {};
    EXPECT_EQ(mirx_res_state_request_map_by_path({}, 9, out), -1);
}

TEST_F(ByPathTest, registrationsSendTheirPaths) {
    service->answer = 21;
    EXPECT_EQ(mirx_res_listening_register_by_path({"/b", "/a"}, 9, callback), 21);
    EXPECT_EQ(theParcel(),
              tagged(control(0, 0, 0, 0, false, 9, {pathElement("/b"), pathElement("/a")})));
    EXPECT_EQ(mirx_res_listening_register_map_by_path({{"/b", "2"}, {"/a", ""}}, 9, callback), 21);
    EXPECT_EQ(theParcel(), tagged(control(0, 0, 0, 0, false, 9,
                                          {pathElement("/a", ""), pathElement("/b", "2")})));
}
