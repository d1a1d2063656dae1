// Tests of scene control: what it sends and returns.
#include "tests/support/client_test.h"

using namespace mirxHalclient;
using testing::ElementsAre;

class SceneControlTest : public ClientTest {};

TEST_F(SceneControlTest, sendsTheSceneAsTheOnlyElement) {
    std::shared_ptr<IClientCallback> callback = std::make_shared<Heard>();
    const struct {
        int handle, duration, saId, arg4, flag, pid;
        bool sent;
    } cases[] = {
            {-1, 5000, 7, -1, -1, 1234, false},
            {3, -1, -7, 4, 0, -5, false},
            {INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN, false},
            {INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX, true},
            {0, 0, 0, 0, 1, 0, true},
    };
    for (const auto& c : cases) {
        const std::string parcel =
                control(2, c.handle, c.duration, c.arg4, c.sent, c.pid, {element(c.saId)})
                        .toString();
        service->answer = c.saId;
        EXPECT_EQ(mirxSACtlRequest(c.handle, c.duration, c.saId, c.arg4, c.flag, c.pid), c.saId);
        EXPECT_EQ(theParcel(), parcel);
        EXPECT_EQ(mirxSACtlRequest(c.handle, c.duration, c.saId, c.arg4, c.flag, c.pid, callback),
                  c.saId);
        EXPECT_EQ(theParcel(), parcel);
    }
    mirxSACtlRequest(5000, 7, 1234);
    EXPECT_EQ(theParcel(), control(2, -1, 5000, -1, false, 1234, {element(7)}).toString());
}

TEST_F(SceneControlTest, releaseSendsTheHandleAndReturnsTheAnswer) {
    service->answer = -9;
    EXPECT_EQ(mirxSACtlRelease(-1), -9);
    const RecordedCall call = theCall();
    EXPECT_EQ(call.operation, "release");
    EXPECT_THAT(call.numbers, ElementsAre(-1));
}
