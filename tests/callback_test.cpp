// Tests of callback objects: what the client receives, and when the library releases it.
#include <aidl/vendor/tavro/hardware/mirx/BnMirxCallback.h>

#include "tests/support/client_test.h"

using namespace mirxHalclient;
using aidl::vendor::tavro::hardware::mirx::BnMirxCallback;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr char kTag[] = "MirxFramework-lib-vendor";
const std::string kPassed =
        "I MirxCallback::onCallback call IClientCallback onCallback is_register ";
const std::string kFound = "I callback is found in request_callbacks\n";
const std::string kNotFound = "E callback not found in request_callbacks\n";
const std::string kTransaction =
        "I (null): BnMirxCallback::logFunc NDK BACKEND method_name onCallback exception_code 0 "
        "exception_message  transaction_error 0 service_specific_error_code 0";

std::string removed(const std::string& counts) {
    return "I MirxCallback::onCallback request callback called , remove from request_callbacks , "
           "request_callbacks size before " +
           counts + "\n";
}

}  // namespace

class CallbackTest : public ClientTest {
  protected:
    ~CallbackTest() override { mirxResListeningUnRegister(handle); }

    // The callback object that the service has received.
    std::shared_ptr<IMirxCallback> received() {
        const RecordedCall call = theCall();
        log.take();
        return call.callback != nullptr ? call.callback : call.parcel.callback;
    }
    std::shared_ptr<IMirxCallback> request(const std::shared_ptr<IClientCallback>& callback) {
        mirxSACtlRequest(-1, 1, 2, 0, 0, 3, callback);
        return received();
    }
    std::shared_ptr<IMirxCallback> listen(const std::shared_ptr<IClientCallback>& callback) {
        std::list<DovClient::Resource> resources = {{7, {}}};
        handle = mirxResListeningRegister(resources, 1, callback);
        return received();
    }

    int handle = -1;
    std::shared_ptr<Heard> heard = std::make_shared<Heard>();
};

TEST_F(CallbackTest, clientGetsEveryElementWithAValue) {
    MirxRequestData other = element(0x1010010);
    other.path = "/ignored";
    const std::vector<MirxRequestData> data = {element(-1, "7"), other};
    const std::string values =
            "I MirxCallbackClient::onCallback res_Id 0xffffffff res_Value 7 is_register 0\n"
            "I MirxCallbackClient::onCallback res_Id 0x1010010 is_register 0\n";
    EXPECT_TRUE(request(heard)->onCallback(data).isOk());
    EXPECT_THAT(heard->take(), ElementsAre("{ffffffff '7'}{1010010 ''}"));
    EXPECT_EQ(log.text(kTag),
              values + kPassed + "0\n" + kFound + removed("1 after 0") + kTransaction);
    EXPECT_TRUE(request(nullptr)->onCallback(data).isOk());
    EXPECT_EQ(log.text(kTag), values + kFound + removed("1 after 0") + kTransaction);

    mirx_res_listening_register_by_path({"/a"}, 1, heard);
    const auto byPath = received();
    for (int call = 0; call < 2; ++call) {
        EXPECT_TRUE(byPath->onCallback({pathElement("/a", "7"), pathElement("/b"), element(1, "8")})
                            .isOk());
        EXPECT_THAT(heard->take(), ElementsAre("/a='7',/b='',='8'"));
        EXPECT_EQ(log.text(kTag),
                  "I MirxCallbackClient::onCallback res_Id /a res_Value 7 is_register 1\n" +
                          kPassed + "1\n" + kTransaction);
    }
    mirxResListeningUnRegister(1);
}

// Every function that takes a callback: its kind, and whether it is removed when called.
TEST_F(CallbackTest, onlyRequestCallbacksAreRemovedWhenCalled) {
    std::list<DovClient::Resource> none, one = {{1, {}}};
    const auto heardBy = [this](int result, size_t waiting) {
        EXPECT_EQ(result, 1);
        EXPECT_EQ(waitingCallbacks(), waiting);
        received()->onCallback({pathElement("/a", "1")});
        EXPECT_EQ(waitingCallbacks(), 0u);
        mirxResListeningUnRegister(1);
        service->take();
        return heard->take().at(0);
    };
    EXPECT_EQ(heardBy(mirxResCtlRequest(-1, 1, none, 0, 0, 2, heard), 1), "{0 '1'}");
    EXPECT_EQ(heardBy(mirxSACtlRequest(-1, 1, 2, 0, 0, 2, heard), 1), "{0 '1'}");
    EXPECT_EQ(heardBy(mirx_resctl_request_with_callback_by_path(1, 1, {}, {}, 0, 0, 2, heard), 1),
              "/a='1'");
    EXPECT_EQ(heardBy(mirxResListeningRegister(one, 2, heard), 0), "{0 '1'}");
    EXPECT_EQ(heardBy(mirxThermalListeningRegister({1}, heard), 0), "{0 '1'}");
    EXPECT_EQ(heardBy(mirx_res_listening_register_by_path({"/a"}, 2, heard), 0), "/a='1'");
    EXPECT_EQ(heardBy(mirx_res_listening_register_map_by_path({{"/b", ""}}, 2, heard), 0),
              "/a='1'");
}

TEST_F(CallbackTest, everyEntryOfACalledObjectIsRemoved) {
    const auto callback = request(heard);
    const auto waiting = request(heard);
    const auto unknown = request(heard);
    {
        std::lock_guard lock(request_callback_mutex);
        request_callbacks = {request_callbacks[0], request_callbacks[1], request_callbacks[0]};
    }
    callback->onCallback({});
    EXPECT_EQ(log.text(kTag), kFound + kFound + removed("3 after 1") + kTransaction);
    callback->onCallback({});
    EXPECT_EQ(log.text(kTag), kNotFound + removed("1 after 1") + kTransaction);
    EXPECT_THAT(heard->take(), IsEmpty()) << "a call without data reached the client";
    unknown->onCallback({element(1)});
    EXPECT_THAT(heard->take(), ElementsAre("{1 ''}"));
    EXPECT_EQ(waitingCallbacks(), 1u) << "an object that was not called was removed";
}

TEST_F(CallbackTest, clientIsFreedWhenLibraryAndServiceReleaseIt) {
    auto requested = request(heard);
    auto listening = listen(heard);
    const std::weak_ptr<Heard> weak = std::exchange(heard, nullptr);
    EXPECT_EQ(mirxResListeningUnRegister(handle), 1);
    EXPECT_TRUE(requested->onCallback({element(1)}).isOk());
    EXPECT_TRUE(listening->onCallback({element(2)}).isOk()) << "the service may call until then";
    EXPECT_THAT(weak.lock()->take(), ElementsAre("{1 ''}", "{2 ''}"));
    log.take();
    requested = listening = nullptr;
    EXPECT_TRUE(eventually([&] { return weak.expired(); }));
    const LogLine freed = {ANDROID_LOG_INFO, kTag, "ndk backend ~MirxCallbackClient"};
    EXPECT_THAT(log.take(), ElementsAre(freed, freed));
}

TEST_F(CallbackTest, nextRequestRestoresTheTransactionLog) {
    int others = 0;
    const auto callback = request(heard);
    BnMirxCallback::logFunc = [&](const BnMirxCallback::TransactionLog&) { ++others; };
    callback->onCallback({});
    EXPECT_EQ(log.text(kTag) + "\n", kFound + removed("1 after 0"));
    request(heard);
    callback->onCallback({});
    EXPECT_EQ(log.text(kTag), kNotFound + removed("1 after 1") + kTransaction);
    EXPECT_EQ(others, 1);
}

// A callback may call the library while its own request is unanswered.
TEST_F(CallbackTest, callbackMayCallTheLibrary) {
    heard->then = [] {
        EXPECT_EQ(mirxResCtlRelease(5), 1);
        EXPECT_EQ(waitingCallbacks(), 1u);
    };
    service->whenCalled([this](const std::string& operation) {
        if (operation != "request") return;
        EXPECT_TRUE(theCall().parcel.callback->onCallback({element(1)}).isOk());
    });
    EXPECT_EQ(mirxSACtlRequest(-1, 1, 2, 0, 0, 3, heard), 1);
    EXPECT_THAT(heard->take(), ElementsAre("{1 ''}"));
    EXPECT_EQ(waitingCallbacks(), 0u);
    EXPECT_EQ(shown(theCall()), "release 5");
}

// The service calls back and, like the caller, releases the callback before it answers: the
// request's parcel is then the last owner. The callback's end makes a call that fails, which needs
// the proxy's lock exclusively.
TEST_F(CallbackTest, callbackMayFailACallWhenItEnds) {
    std::atomic<int> ended = 0;
    const auto fail = [&](Heard* last) {
        delete last;
        service->whenCalled(nullptr);
        service->failing = true;
        mirx_init();
        service->failing = false;
        ++ended;
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
        heard = std::shared_ptr<Heard>(new Heard, fail);
        byId = heard;
        byPath = std::exchange(heard, nullptr);
        service->whenCalled([&](const std::string&) {
            service->take().back().parcel.callback->onCallback({});
            byId = nullptr;
            byPath = nullptr;
        });
        const int before = ended;
        EXPECT_EQ(request(), 1);
        EXPECT_TRUE(eventually([&] { return ended == before + 1; }));
        EXPECT_EQ(waitingCallbacks(), 0u);
    }
}
