// Tests of callback objects: what the client receives, and when the library releases it.
#include "tests/support/client_test.h"

#include <aidl/vendor/tavro/hardware/mirx/BnMirxCallback.h>

using namespace mirxHalclient;
using aidl::vendor::tavro::hardware::mirx::BnMirxCallback;
using testing::ElementsAre;
using testing::Pair;

namespace {

LogLine line(const std::string& text, int priority = ANDROID_LOG_INFO) {
    return {priority, "MirxFramework-lib-vendor", text};
}
LogLine removed(int before, int after) {
    return line(
            "MirxCallback::onCallback request callback called , remove from request_callbacks , "
            "request_callbacks size before " +
            std::to_string(before) + " after " + std::to_string(after));
}

const LogLine kFound = line("callback is found in request_callbacks");
const LogLine kNotFound = line("callback not found in request_callbacks", ANDROID_LOG_ERROR);
const LogLine kGone = line("ndk backend ~MirxCallbackClient");
const LogLine kTransaction = {
        ANDROID_LOG_INFO, "(null)",
        "BnMirxCallback::logFunc NDK BACKEND method_name onCallback exception_code 0 "
        "exception_message  transaction_error 0 service_specific_error_code 0"};

}  // namespace

class CallbackClientTest : public ClientTest {
  protected:
    // Makes a request and returns the callback object that the service received.
    std::shared_ptr<IMirxCallback> request(const std::shared_ptr<IClientCallback>& callback) {
        mirxSACtlRequest(-1, 1, 2, 0, 0, 3, callback);
        const auto received = theCall().parcel.callback;
        log.take();
        return received;
    }

    std::shared_ptr<Heard> heard = std::make_shared<Heard>();
    std::shared_ptr<HeardByPath> heardByPath = std::make_shared<HeardByPath>();
};

TEST_F(CallbackClientTest, resourcesByIdAlwaysHaveAValue) {
    const auto callback = request(heard);
    MirxRequestData other = element(0x1010010);
    other.arg = 5;
    other.path = "/ignored";
    EXPECT_TRUE(callback->onCallback({element(-1, "7"), other, element(0, "")}).isOk());
    EXPECT_THAT(heard->take(),
                ElementsAre(ElementsAre(Pair(-1, "7"), Pair(0x1010010, ""), Pair(0, ""))));
    EXPECT_THAT(
            log.take(),
            ElementsAre(
                    line("MirxCallbackClient::onCallback res_Id 0xffffffff res_Value 7 "
                         "is_register 0"),
                    line("MirxCallbackClient::onCallback res_Id 0x1010010 is_register 0"),
                    line("MirxCallbackClient::onCallback res_Id 0 res_Value  is_register 0"),
                    line("MirxCallback::onCallback call IClientCallback onCallback is_register 0"),
                    kFound, removed(1, 0), kTransaction));
}

TEST_F(CallbackClientTest, absentPathsAndValuesArriveAsEmptyTexts) {
    mirx_res_listening_register_by_path({"/a"}, 1, heardByPath);
    const auto callback = theCall().callback;
    log.take();
    for (int call = 0; call < 2; ++call) {
        EXPECT_TRUE(callback->onCallback({pathElement("/a", "7"), pathElement("/b"),
                                          pathElement(std::nullopt, "8"), element(5)})
                            .isOk());
        EXPECT_THAT(heardByPath->take(), ElementsAre(Pair(ElementsAre("7", "", "8", ""),
                                                          ElementsAre("/a", "/b", "", ""))));
        EXPECT_THAT(log.take(),
                    ElementsAre(line("MirxCallbackClient::onCallback res_Id /a res_Value 7 "
                                     "is_register 1"),
                                line("MirxCallback::onCallback call IClientCallback onCallback "
                                     "is_register 1"),
                                kTransaction));
    }
}

// Covers every function that takes a callback: the kind of the callback and its removal.
TEST_F(CallbackClientTest, onlyRequestCallbacksAreRemovedWhenCalled) {
    std::list<DovClient::Resource> none;
    const struct {
        std::function<int()> hand;
        bool isRegistration, byPath;
    } cases[] = {
            {[&] { return mirxResCtlRequest(-1, 1, none, 0, 0, 2, heard); }, false, false},
            {[&] { return mirxSACtlRequest(-1, 1, 2, 0, 0, 2, heard); }, false, false},
            {[&] {
                 return mirx_resctl_request_with_callback_by_path(-1, 1, {}, {}, 0, 0, 2,
                                                                  heardByPath);
             },
             false, true},
            {[&] { return mirxThermalListeningRegister({1}, heard); }, true, false},
            {[&] { return mirx_res_listening_register_by_path({"/a"}, 2, heardByPath); }, true,
             true},
            {[&] {
                 return mirx_res_listening_register_map_by_path({{"/b", ""}}, 2, heardByPath);
             },
             true, true},
    };
    for (const auto& c : cases) {
        ASSERT_EQ(c.hand(), 1);
        const RecordedCall call = theCall();
        const auto callback = call.callback ? call.callback : call.parcel.callback;
        ASSERT_NE(callback, nullptr);
        EXPECT_EQ(waitingCallbacks(), c.isRegistration ? 0 : 1);
        callback->onCallback({pathElement("/a", "1")});
        EXPECT_EQ(heard->take().size(), c.byPath ? 0 : 1);
        EXPECT_EQ(heardByPath->take().size(), c.byPath ? 1 : 0);
        EXPECT_EQ(waitingCallbacks(), 0u);
    }
}

TEST_F(CallbackClientTest, everyEntryOfACalledObjectIsRemoved) {
    const auto callback = request(heard);
    const auto waiting = request(heard);
    const auto unknown = request(heard);
    {
        std::lock_guard lock(request_callback_mutex);
        request_callbacks = {request_callbacks[0], request_callbacks[1], request_callbacks[0]};
    }
    callback->onCallback({});
    EXPECT_THAT(log.take(), testing::IsSupersetOf({kFound, kFound, removed(3, 1)}));
    callback->onCallback({});
    EXPECT_THAT(log.take(), testing::IsSupersetOf({kNotFound, removed(1, 1)}));
    unknown->onCallback({element(1)});
    EXPECT_THAT(log.take(), testing::IsSupersetOf({kNotFound, removed(1, 1)}));
    EXPECT_THAT(heard->take(), ElementsAre(ElementsAre(Pair(1, ""))))
            << "only data calls the client, even through an object that is not listed";
    EXPECT_EQ(waitingCallbacks(), 1u) << "an object that was not called was removed";
}

TEST_F(CallbackClientTest, dataForAnAbsentCallbackIsDropped) {
    const auto callback = request(nullptr);
    EXPECT_TRUE(callback->onCallback({element(1, "2")}).isOk());
    EXPECT_THAT(
            log.take(),
            ElementsAre(line("MirxCallbackClient::onCallback res_Id 0x1 res_Value 2 is_register 0"),
                        kFound, removed(1, 0), kTransaction));
}

TEST_F(CallbackClientTest, callbackDuringTheRequestMayCallTheLibrary) {
    heard->then = [] {
        EXPECT_EQ(mirxResCtlRelease(5), 1);
        EXPECT_EQ(waitingCallbacks(), 1u);
    };
    service->whenCalled([this](const std::string& operation) {
        if (operation != "request") return;
        for (const RecordedCall& call : service->take()) {
            EXPECT_TRUE(call.parcel.callback->onCallback({element(1)}).isOk());
        }
    });
    EXPECT_EQ(mirxSACtlRequest(-1, 1, 2, 0, 0, 3, heard), 1);
    EXPECT_EQ(heard->take().size(), 1u);
    EXPECT_EQ(waitingCallbacks(), 0u);
    EXPECT_EQ(theCall().operation, "release");
}

TEST_F(CallbackClientTest, clientIsFreedWhenLibraryAndServiceReleaseIt) {
    auto callback = request(heard);
    const std::weak_ptr<Heard> weak = heard;
    heard.reset();
    callback->onCallback({});
    log.take();
    EXPECT_FALSE(weak.expired());
    callback.reset();
    EXPECT_TRUE(eventually([&] { return weak.expired(); }));
    EXPECT_THAT(log.take(), ElementsAre(kGone));
}

TEST_F(CallbackClientTest, nextRequestRestoresTheTransactionLog) {
    int others = 0;
    const auto callback = request(heard);
    BnMirxCallback::logFunc = [&](const BnMirxCallback::TransactionLog&) { ++others; };
    callback->onCallback({});
    EXPECT_EQ(others, 1);
    EXPECT_THAT(log.take(), testing::Not(testing::Contains(kTransaction)));
    request(heard);
    callback->onCallback({});
    EXPECT_EQ(others, 1);
    EXPECT_THAT(log.take(), testing::Contains(kTransaction));
}
