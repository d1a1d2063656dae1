// Tests with a service that misuses the callback objects that it received.
#include <thread>

#include <android/binder_parcel_utils.h>
#include <dov/dov.h>

#include "tests/support/client_test.h"

using namespace mirxHalclient;
using aidl::vendor::tavro::hardware::mirx::IMirxCallback;

class HostileCallbackTest : public ClientTest {
  protected:
    ~HostileCallbackTest() override { mirxResListeningUnRegister(handle); }

    // Registers `callback` and returns the object that the service received.
    std::shared_ptr<IMirxCallback> listen(const std::shared_ptr<IClientCallback>& callback) {
        std::list<DovClient::Resource> resources = {{7, {}}};
        handle = mirxResListeningRegister(resources, 1, callback);
        return theCall().callback;
    }
    std::shared_ptr<IMirxCallback> request(const std::shared_ptr<IClientCallback>& callback) {
        mirxSACtlRequest(-1, 0, 2, 0, 0, 1, callback);
        return theCall().parcel.callback;
    }

    int handle = -1;
    std::shared_ptr<Heard> heard = std::make_shared<Heard>();
};

TEST_F(HostileCallbackTest, unregisteredClientStillReceivesCallbacks) {
    const auto callback = listen(heard);
    EXPECT_EQ(mirxResListeningUnRegister(handle), 1);
    EXPECT_TRUE(callback->onCallback({element(1)}).isOk());
    EXPECT_EQ(heard->take().size(), 1u);
}

TEST_F(HostileCallbackTest, clientOutlivesItsLastOwnReference) {
    auto listening = listen(heard);
    auto requested = request(heard);
    const std::weak_ptr<Heard> weak = std::exchange(heard, nullptr);
    mirxResListeningUnRegister(handle);
    EXPECT_TRUE(listening->onCallback({element(1)}).isOk());
    EXPECT_TRUE(requested->onCallback({element(1)}).isOk());
    EXPECT_EQ(weak.lock()->take().size(), 2u);
    listening = requested = nullptr;
    EXPECT_TRUE(eventually([&] { return weak.expired(); }));
}

TEST_F(HostileCallbackTest, concurrentCallbacksAllReachTheClient) {
    constexpr int kCalls = 200;
    const auto listening = listen(heard);
    const auto requested = request(heard);
    std::vector<std::thread> callers;
    for (int i = 0; i < 2; ++i) {
        callers.emplace_back([&] {
            for (int call = 0; call < kCalls; ++call) {
                EXPECT_TRUE(listening->onCallback({element(1)}).isOk());
                EXPECT_TRUE(requested->onCallback({element(2)}).isOk());
            }
        });
    }
    for (std::thread& caller : callers) caller.join();
    EXPECT_EQ(heard->take().size(), 4u * kCalls);
    EXPECT_EQ(waitingCallbacks(), 0u);
}

// The service calls the object and releases it while another thread unregisters.
TEST_F(HostileCallbackTest, callbackMayRaceWithItsUnregistration) {
    for (int round = 0; round < 50; ++round) {
        auto callback = listen(heard);
        ASSERT_NE(callback, nullptr);
        std::thread caller(
                [callback = std::move(callback)] { callback->onCallback({element(1)}); });
        EXPECT_EQ(mirxResListeningUnRegister(handle), 1);
        caller.join();
        service->take();
    }
}

TEST_F(HostileCallbackTest, callbackMayUnregisterItself) {
    auto callback = listen(heard);
    const std::weak_ptr<Heard> weak = heard;
    heard->then = [this] { EXPECT_EQ(mirxResListeningUnRegister(handle), 1); };
    heard.reset();
    EXPECT_TRUE(callback->onCallback({element(1)}).isOk());
    service->take();
    callback.reset();
    EXPECT_TRUE(eventually([&] { return weak.expired(); }));
    EXPECT_NE(listen(std::make_shared<Heard>()), nullptr) << "an entry was not removed";
}

// Malformed parcels are rejected, and the object still accepts valid ones.
TEST_F(HostileCallbackTest, malformedCallbackParcelsAreRejected) {
    constexpr transaction_code_t kOnCallback = FIRST_CALL_TRANSACTION;
    const std::vector<std::vector<int32_t>> bad = {
            {},
            {-1},
            {-2},
            {INT32_MAX},
            {3},
            {1, 0},
            {1, 1},
            {1, 1, 3},
            {1, 1, -8},
            {1, 1, INT32_MAX, 7},
            {1, 1, 0},
            {1, 7, 7},
            {2, 1, 24, 7, 0, -1, -1, -1},
    };
    const auto callback = listen(heard);
    const auto transact = [&](transaction_code_t code, const std::vector<int32_t>& words) {
        ndk::ScopedAParcel in, out;
        EXPECT_EQ(AIBinder_prepareTransaction(callback->asBinder().get(), in.getR()), STATUS_OK);
        for (const int32_t word : words) AParcel_writeInt32(in.get(), word);
        return AIBinder_transact(callback->asBinder().get(), code, in.getR(), out.getR(), 0);
    };
    for (const auto& words : bad) {
        EXPECT_NE(transact(kOnCallback, words), STATUS_OK) << testing::PrintToString(words);
    }
    for (const transaction_code_t code : {kOnCallback + 1, kOnCallback + 1000}) {
        EXPECT_EQ(transact(code, {0}), STATUS_UNKNOWN_TRANSACTION);
    }
    EXPECT_TRUE(heard->take().empty());
    EXPECT_TRUE(callback->onCallback({element(1)}).isOk());
    EXPECT_EQ(heard->take().size(), 1u);
}

TEST_F(HostileCallbackTest, largeDataArrivesOrFailsTheServicesCall) {
    const auto callback = listen(heard);
    // A character takes two bytes. A parcel is limited to 100 KB over sockets and to 1 MB by the
    // driver.
    const size_t most = overDriver() ? 500'000 : 50'000;
    for (const size_t size : {40'000u, 100'000u, 1'000'000u}) {
        const bool fits = size < most;
        EXPECT_EQ(callback->onCallback({element(1, std::string(size, 'x'))}).isOk(), fits);
        EXPECT_EQ(heard->take().size(), fits ? 1u : 0u);
    }
    EXPECT_TRUE(eventually([] { return dovInit() == 0; })) << "later calls fail";
}
