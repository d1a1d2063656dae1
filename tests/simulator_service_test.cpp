// The simulated service behind real proxies: queries, listeners, thermal levels, dumps.
#include <sstream>

#include <gmock/gmock.h>

#include <aidl/vendor/tavro/hardware/mirx/BnMirxCallback.h>
#include <aidl/vendor/tavro/hardware/mirx/IMirx.h>
#include <android/binder_manager.h>

#include "simulator/describe.h"
#include "simulator/mirx_service.h"
#include "tests/support/data.h"
#include "tests/support/test_services.h"

using aidl::vendor::tavro::hardware::mirx::BnMirxCallback;
using aidl::vendor::tavro::hardware::mirx::IMirx;
using testing::HasSubstr;

namespace {

class Callback : public BnMirxCallback {
  public:
    ndk::ScopedAStatus onCallback(const std::vector<MirxRequestData>& data) override {
        std::lock_guard lock(mMutex);
        mHeard.push_back(simulator::describe(data));
        return ndk::ScopedAStatus::ok();
    }
    std::vector<std::string> heard() {
        std::lock_guard lock(mMutex);
        return mHeard;
    }

  private:
    std::mutex mMutex;
    std::vector<std::string> mHeard GUARDED_BY(mMutex);
};

MirxRequestParcel parcel(int32_t requestType, std::vector<MirxRequestData> data) {
    MirxRequestParcel parcel;
    parcel.requestType = requestType;
    parcel.requestData = std::move(data);
    return parcel;
}

// Sets `ended` when it is destroyed. As the first base it is destroyed last.
struct End {
    std::atomic<bool>& ended;
    ~End() { ended = true; }
};
struct Simulated : private End, public simulator::MirxService {
    Simulated(std::atomic<bool>& ended, simulator::Journal& journal)
        : End{ended}, MirxService(journal) {}
};

constexpr int32_t kFloor = 0x01010010;

}  // namespace

class SimulatorServiceTest : public BinderTest {
  protected:
    SimulatorServiceTest() {
        serve(simulated->asBinder());
        mirx = IMirx::fromBinder(ndk::SpAIBinder(AServiceManager_checkService(kServiceName)));
    }
    ~SimulatorServiceTest() override {
        mirx.reset();
        stopServing();
        // The transport drops the service a moment later. The journal must outlive the service.
        simulated.reset();
        EXPECT_TRUE(eventually([this] { return ended.load(); }));
    }

    int32_t request(const MirxRequestParcel& parcel) {
        int32_t result = 0;
        EXPECT_TRUE(mirx->request(parcel, &result).isOk());
        return result;
    }
    int32_t release(int32_t handle) {
        int32_t result = 0;
        EXPECT_TRUE(mirx->release(handle, &result).isOk());
        return result;
    }
    std::string state(const MirxRequestParcel& query) {
        std::vector<MirxRequestData> data;
        EXPECT_TRUE(mirx->stateRequest(query, &data).isOk());
        return simulator::describe(data);
    }
    int32_t listen(const std::shared_ptr<Callback>& callback, std::vector<MirxRequestData> keys) {
        int32_t handle = 0;
        EXPECT_TRUE(mirx->listeningRegister(parcel(0, std::move(keys)), callback, &handle).isOk());
        return handle;
    }

    std::atomic<bool> ended = false;
    std::ostringstream printed;
    simulator::Journal journal{printed};
    std::shared_ptr<simulator::MirxService> simulated =
            ndk::SharedRefBase::make<Simulated>(ended, journal);
    std::shared_ptr<IMirx> mirx;
};

TEST_F(SimulatorServiceTest, everyQueryKindIsAnswered) {
    int32_t result = 0;
    mirx->propertySet("feature.3", "1", &result);
    mirx->propertySet("power_mode.2", "7", &result);
    EXPECT_EQ(state(parcel(0, {element(kFloor, ""), element(5, "")})),
              "[{id=0x01010010 value=\"300000\"} {id=5}]");
    request(parcel(1, {element(kFloor, "9"), element(5, "x")}));
    EXPECT_EQ(state(parcel(0, {element(kFloor, ""), element(5, "")})),
              "[{id=0x01010010 value=\"9\"} {id=5 value=\"x\"}]");
    EXPECT_EQ(state(parcel(0xd, {element(2)})), "[{id=2 value=\"7\"}]");
    EXPECT_EQ(state(parcel(0xd, {element(1)})), "[{id=1 value=\"0\"}]");
    EXPECT_EQ(state(parcel(0x11, {element(3)})), "[{id=3 value=\"1\"}]");
    EXPECT_EQ(state(parcel(0x11, {})), "[{id=0 value=\"0\"}]");
    EXPECT_EQ(state(parcel(0xf, {element(1), element(2)})), "[{id=1 value=\"155\"}]");
    EXPECT_THAT(state(parcel(0x10, {})), HasSubstr("{id=0x01010010 value=\"9\"}"));
    EXPECT_THAT(state(parcel(0xb, {})), HasSubstr("resource control (1)"));
    EXPECT_EQ(state(parcel(99, {element(1)})), "[]");
}

TEST_F(SimulatorServiceTest, answersFitOneMessage) {
    const std::string longText(30'000, 'x');
    for (const int32_t id : {1, 2}) request(parcel(1, {element(id, longText)}));
    for (int i = 0; i < 300; ++i) request(parcel(1, {element(3, "3")}));
    for (const int32_t query : {0, 0xb, 0x51300001}) {
        EXPECT_GT(state(parcel(query, {element(1), element(2)})).size(), 8'000u) << query;
    }
    EXPECT_THAT(printed.str(), HasSubstr("only 1 of 2 elements fit one answer"));
    int32_t result = 0;
    EXPECT_TRUE(mirx->propertySet("p", std::string(256, 'x'), &result).isOk());
    EXPECT_EQ(result, -1);
}

TEST_F(SimulatorServiceTest, ruleHoldsResourcesUntilStatusZero) {
    int32_t result = -1;
    EXPECT_TRUE(mirx->ruleCtl(14, 2, {element(kFloor, "1")}, &result).isOk());
    EXPECT_EQ(result, 0);
    EXPECT_EQ(state(parcel(0, {element(kFloor)})), "[{id=0x01010010 value=\"1\"}]");
    mirx->ruleCtl(14, 1, {}, &result);
    EXPECT_EQ(state(parcel(0, {element(kFloor)})), "[{id=0x01010010 value=\"300000\"}]");
    mirx->ruleCtl(14, 1, {element(kFloor, "2")}, &result);
    mirx->ruleCtl(14, 0, {element(kFloor, "3")}, &result);
    EXPECT_EQ(state(parcel(0, {element(kFloor)})), "[{id=0x01010010 value=\"300000\"}]");
}

TEST_F(SimulatorServiceTest, listenerGetsOnlyItsResources) {
    const auto callback = ndk::SharedRefBase::make<Callback>();
    const int32_t handle = listen(callback, {element(kFloor), element(5)});
    const int32_t older = request(parcel(1, {element(kFloor, "1"), element(6, "6")}));
    const int32_t newer = request(parcel(1, {element(kFloor, "2")}));
    release(newer);
    release(older);
    EXPECT_TRUE(eventually([&] { return callback->heard().size() == 4; }));
    EXPECT_THAT(callback->heard(), testing::ElementsAre("[{id=0x01010010 value=\"1\"}]",
                                                        "[{id=0x01010010 value=\"2\"}]",
                                                        "[{id=0x01010010 value=\"1\"}]",
                                                        "[{id=0x01010010 value=\"300000\"}]"));
    int32_t result = 0;
    mirx->thermalListeningUnregister(handle, &result);
    EXPECT_EQ(result, -1) << "not a thermal registration";
    mirx->listeningUnregister(handle, &result);
    EXPECT_EQ(result, 0);
    mirx->listeningUnregister(handle, &result);
    EXPECT_EQ(result, -1);
    request(parcel(1, {element(kFloor, "3")}));
    // A completion is queued behind all earlier callbacks.
    MirxRequestParcel last = parcel(1, {});
    const auto completion = ndk::SharedRefBase::make<Callback>();
    last.callback = completion;
    request(last);
    EXPECT_TRUE(eventually([&] { return completion->heard().size() == 1; }));
    EXPECT_EQ(callback->heard().size(), 4u);
}

TEST_F(SimulatorServiceTest, thermalListenerGetsOnlyChangesOfItsItems) {
    const auto callback = ndk::SharedRefBase::make<Callback>();
    int32_t handle = 0;
    EXPECT_TRUE(mirx->thermalListeningRegister({1, 2}, callback, &handle).isOk());
    for (const char* level : {"3", "3", "4"}) {
        EXPECT_EQ(request(parcel(7, {element(1, level), element(9, level)})), 1);
    }
    EXPECT_TRUE(eventually([&] { return callback->heard().size() == 2; }));
    EXPECT_THAT(callback->heard(),
                testing::ElementsAre("[{id=1 value=\"3\"}]", "[{id=1 value=\"4\"}]"));
}

TEST_F(SimulatorServiceTest, diagnosticsPrintTablesAndSwitchTheHistory) {
    MirxRequestParcel scene = parcel(2, {element(7)});
    scene.pid = 1234;
    const int32_t handle = request(scene);
    request(parcel(1, {element(kFloor, "9")}));
    const std::vector<std::pair<int32_t, std::string>> tables = {
            {0, "callbacks to make: 0"},
            {1, "handle " + std::to_string(handle)},
            {2, "0x01010010"},
            {3, "{id=0x01010010 value=\"9\"}"},
            {4, "cpu0 frequency floor"},
            {5, "scenes: 1"},
            {6, overDriver() ? "    pid " : "    pid 1234"},
            {7, "listeners: 0"},
            {8, "scene control (2)"},
    };
    for (const auto& [code, text] : tables) {
        printed.str("");
        EXPECT_EQ(request(parcel(5, {element(code)})), 1);
        EXPECT_THAT(printed.str(), HasSubstr("dump     "));
        EXPECT_THAT(printed.str(), HasSubstr(text));
    }
    EXPECT_EQ(request(parcel(5, {element(9)})), 0) << "no diagnostic has this code";
    EXPECT_EQ(request(parcel(5, {})), 0);
    EXPECT_EQ(request(parcel(5, {element(11)})), 1);
    const std::string before = state(parcel(0xb, {}));
    request(parcel(1, {element(1, "1")}));
    EXPECT_EQ(state(parcel(0xb, {})), before);
    EXPECT_EQ(request(parcel(5, {element(10)})), 1);
    request(parcel(1, {element(1, "1")}));
    EXPECT_NE(state(parcel(0xb, {})), before);
}
