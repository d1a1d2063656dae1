// Checks every declared service against docs/contract.md.
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <aidl/vendor/tavro/hardware/mirx/BnMirxCallback.h>
#include <aidl/vendor/tavro/hardware/mirx/IMirx.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>

#include "aidl/request_kinds.h"

using namespace mirx;
using namespace std::chrono_literals;
using aidl::vendor::tavro::hardware::mirx::BnMirxCallback;
using aidl::vendor::tavro::hardware::mirx::IMirx;
using aidl::vendor::tavro::hardware::mirx::MirxRequestData;
using aidl::vendor::tavro::hardware::mirx::MirxRequestParcel;
using Data = std::vector<MirxRequestData>;

namespace {

constexpr int32_t kResource = 0x01010010;  // a resource that every device has
constexpr char kValue[] = "1500000";
constexpr int32_t kNoHandle = 0x7ffffff0;  // one that no service gives out in a test
constexpr int32_t kRule = 0x5eed;
constexpr int32_t kThermalItem = 3;

// A failure during its lifetime names this sentence of docs/contract.md.
struct Sentence : testing::ScopedTrace {
    explicit Sentence(const char* text) : ScopedTrace("docs/contract.md", 0, text) {}
};

MirxRequestData element(int32_t id, std::optional<std::string> value = {}) {
    MirxRequestData data;
    data.id = id;
    data.value = std::move(value);
    return data;
}

MirxRequestParcel parcel(int32_t kind, Data data, int64_t duration = 0) {
    MirxRequestParcel parcel;
    parcel.requestType = kind;
    parcel.requestData = std::move(data);
    parcel.duration = duration;
    parcel.handle = -1;
    parcel.arg4 = -1;
    parcel.pid = getpid();
    return parcel;
}

bool eventually(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + 3s;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(10ms);
    }
    return true;
}

bool isNumber(const std::optional<std::string>& value) {
    const size_t digits = value && value->starts_with('-') ? 1 : 0;
    return value && value->size() > digits &&
           value->find_first_not_of("0123456789", digits) == std::string::npos;
}

std::shared_ptr<IMirx> find(const std::string& instance) {
    return IMirx::fromBinder(ndk::SpAIBinder(AServiceManager_checkService(instance.c_str())));
}

class Listener : public BnMirxCallback {
  public:
    ndk::ScopedAStatus onCallback(const Data& data) override {
        std::lock_guard lock(mMutex);
        for (const MirxRequestData& element : data) mSeen.push_back(element.value.value_or(""));
        ++calls;
        return ndk::ScopedAStatus::ok();
    }
    bool hasSeen(const std::string& value) {
        std::lock_guard lock(mMutex);
        return std::find(mSeen.begin(), mSeen.end(), value) != mSeen.end();
    }
    bool eventuallySees(const std::string& value) {
        return eventually([&] { return hasSeen(value); });
    }

    std::atomic<int> calls = 0;

  private:
    std::mutex mMutex;
    std::vector<std::string> mSeen;
};

// Starts clients in processes of their own, through a process that is forked before this one has
// threads. A client registers a listener and makes requests until it is killed.
class OtherClients {
  public:
    struct Client {
        pid_t pid = -1;
        int32_t handle = -1;
    };

    void prepare() {
        if (socketpair(AF_UNIX, SOCK_SEQPACKET, 0, mSockets) != 0) abort();
        const bool here = fork() != 0;
        close(mSockets[here ? 1 : 0]);
        if (here) return;
        signal(SIGCHLD, SIG_IGN);  // clients leave no zombies
        char instance[200] = "";
        ssize_t length;
        while ((length = read(mSockets[1], instance, sizeof(instance))) > 0) {
            if (fork() == 0) run({instance, static_cast<size_t>(length)});
        }
        _exit(0);
    }
    Client start(const std::string& instance) {
        Client client;
        if (write(mSockets[0], instance.data(), instance.size()) > 0) {
            if (read(mSockets[0], &client, sizeof(client)) <= 0) client.pid = -1;
        }
        return client;
    }

  private:
    [[noreturn]] void run(const std::string& instance) {
        Client client = {.pid = getpid()};
        ABinderProcess_startThreadPool();
        const auto mirx = find(instance);
        if (mirx != nullptr) {
            mirx->listeningRegister(parcel(kStateQuery, {element(kResource)}),
                                    ndk::SharedRefBase::make<Listener>(), &client.handle);
        }
        if (write(mSockets[1], &client, sizeof(client)) < 0 || mirx == nullptr) _exit(1);
        for (int32_t held = -1;;) mirx->request(parcel(kEventAcquire, {element(0)}, 1), &held);
    }

    int mSockets[2] = {-1, -1};  // of this process, and of the one that starts clients
} otherClients;

class MirxTest : public testing::TestWithParam<std::string> {
  protected:
    void SetUp() override {
        ASSERT_TRUE(eventually([this] { return (mirx = find(GetParam())) != nullptr; }))
                << GetParam() << " is declared and does not run";
    }
    void TearDown() override {
        for (const int32_t handle : mHandles) release(handle);
    }

    // Calls an operation, which must not fail, and returns its answer.
    template <typename Result, typename Operation, typename... Arguments>
    Result call(Operation operation, const Arguments&... arguments) {
        Result result{};
        const ndk::ScopedAStatus status = ((*mirx).*operation)(arguments..., &result);
        const Sentence sentence("A service refuses with a value, never with a failure.");
        EXPECT_TRUE(status.isOk()) << status.getDescription();
        return result;
    }
    int32_t request(const MirxRequestParcel& parcel) {
        const auto handle = call<int32_t>(&IMirx::request, parcel);
        if (handle > 0) mHandles.push_back(handle);
        return handle;
    }
    int32_t hold(const std::string& value, int64_t duration = 0) {
        return request(parcel(kResourceControl, {element(kResource, value)}, duration));
    }
    int32_t release(int32_t handle) { return call<int32_t>(&IMirx::release, handle); }
    int32_t unlisten(int32_t handle) { return call<int32_t>(&IMirx::listeningUnregister, handle); }
    Data ask(int32_t kind, Data data = {}) {
        return call<Data>(&IMirx::stateRequest, parcel(kind, std::move(data)));
    }
    std::optional<std::string> shown() {
        const Data state = ask(kStateQuery, {element(kResource)});
        return state.empty() ? std::nullopt : state.front().value;
    }
    int32_t listen(const std::shared_ptr<Listener>& listener) {
        return call<int32_t>(&IMirx::listeningRegister, parcel(kStateQuery, {element(kResource)}),
                             listener);
    }

    std::shared_ptr<IMirx> mirx;
    const std::shared_ptr<Listener> listener = ndk::SharedRefBase::make<Listener>();

  private:
    std::vector<int32_t> mHandles;
};

}  // namespace

TEST_P(MirxTest, hasVersionAndHashOfTheInterface) {
    const Sentence sentence("A service has the version and the hash of the frozen interface.");
    EXPECT_GE(call<int32_t>(&IMirx::getInterfaceVersion), 1);
    EXPECT_EQ(call<std::string>(&IMirx::getInterfaceHash), IMirx::hash);
}

TEST_P(MirxTest, initSucceedsAgain) {
    const Sentence sentence("`init` succeeds however often it is called.");
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(mirx->init().isOk());
}

TEST_P(MirxTest, handlesAreDistinct) {
    const Sentence sentence("Two holds at one time never have the same handle.");
    std::set<int32_t> handles;
    for (const int32_t kind : {kResourceControl, kSceneControl, kEventAcquire, kPlatformControl}) {
        for (int i = 0; i < 5; ++i) {
            const int32_t handle = request(parcel(kind, {element(i + 1, "1")}));
            EXPECT_GT(handle, 0) << "kind " << kind;
            EXPECT_TRUE(handles.insert(handle).second) << "kind " << kind << ", " << handle;
        }
    }
}

TEST_P(MirxTest, unknownHandleIsAnsweredWithMinusOne) {
    const Sentence sentence("A handle that the service does not know is answered with -1.");
    for (const auto operation :
         {&IMirx::release, &IMirx::listeningUnregister, &IMirx::thermalListeningUnregister}) {
        for (const int32_t handle : {-1, 0, kNoHandle}) {
            EXPECT_EQ(call<int32_t>(operation, handle), -1) << handle;
        }
    }
}

TEST_P(MirxTest, newestHoldDeterminesTheValue) {
    const auto before = shown();
    const int32_t older = hold(kValue), newer = hold("1600000");
    const Sentence sentence("A resource shows the value of its newest hold.");
    EXPECT_EQ(shown(), "1600000");
    const Sentence released("`release` answers 0 when the handle held something, else -1.");
    EXPECT_EQ(release(newer), 0);
    EXPECT_EQ(release(newer), -1);
    EXPECT_EQ(shown(), kValue);
    EXPECT_EQ(release(older), 0);
    EXPECT_EQ(shown(), before);
}

TEST_P(MirxTest, holdEndsAfterItsDuration) {
    const auto before = shown();
    const int32_t handle = hold(kValue, 1);
    const Sentence sentence("A hold with a `duration` of 1 or more ends by itself.");
    EXPECT_GT(handle, 0);
    EXPECT_TRUE(eventually([&] { return shown() == before; }));
    EXPECT_EQ(release(handle), -1);
}

TEST_P(MirxTest, oneWayRequestUsesItsHandle) {
    MirxRequestParcel oneWay = parcel(kResourceControl, {element(kResource, kValue)});
    oneWay.handle = kNoHandle;
    const Sentence sentence("A one-way request acquires under the handle that it brings.");
    EXPECT_TRUE(mirx->oneWayRequest(oneWay).isOk());
    EXPECT_TRUE(eventually([this] { return shown() == kValue; }));
    EXPECT_EQ(release(kNoHandle), 0);
}

TEST_P(MirxTest, listenerIsCalledWhileRegistered) {
    const auto other = ndk::SharedRefBase::make<Listener>();
    const int32_t handle = listen(listener), otherHandle = listen(other);
    const Sentence sentence("A listener is called when its resource shows another value.");
    EXPECT_GT(handle, 0);
    release(hold(kValue));
    EXPECT_TRUE(listener->eventuallySees(kValue));
    const Sentence ended("A listener is not called for changes after it was unregistered.");
    EXPECT_EQ(unlisten(handle), 0);
    hold("1600000");
    EXPECT_TRUE(other->eventuallySees("1600000"));
    std::this_thread::sleep_for(100ms);
    EXPECT_FALSE(listener->hasSeen("1600000"));
    EXPECT_EQ(unlisten(handle), -1);
    EXPECT_EQ(unlisten(otherHandle), 0);
}

TEST_P(MirxTest, listenerOfDeadClientIsDropped) {
    const auto [pid, handle] = otherClients.start(GetParam());
    ASSERT_GT(pid, 0);
    std::this_thread::sleep_for(100ms);  // so that it dies during a request
    kill(pid, SIGKILL);
    const Sentence sentence("A registration ends with the process of its callback.");
    EXPECT_GT(handle, 0);
    std::this_thread::sleep_for(1s);
    EXPECT_EQ(unlisten(handle), -1);
}

TEST_P(MirxTest, requestCallbackIsCalledOnce) {
    MirxRequestParcel withCallback = parcel(kResourceControl, {element(kResource, kValue)});
    const Sentence sentence("The callback of a request is called once.");
    // The second callback comes after every call of the first.
    for (const auto& callback : {listener, ndk::SharedRefBase::make<Listener>()}) {
        withCallback.callback = callback;
        request(withCallback);
        EXPECT_TRUE(eventually([&] { return callback->calls > 0; }));
    }
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(listener->calls, 1);
}

TEST_P(MirxTest, thermalListenerIsCalledOnChange) {
    const std::vector<int32_t> items = {kThermalItem};
    const auto handle = call<int32_t>(&IMirx::thermalListeningRegister, items, listener);
    const Sentence sentence("A thermal listener is called when its item has another level.");
    EXPECT_GT(handle, 0);
    for (const char* level : {"4", "5"}) {
        EXPECT_GE(request(parcel(kThermalNotification, {element(kThermalItem, level)})), 1);
    }
    EXPECT_TRUE(listener->eventuallySees("5"));
    EXPECT_EQ(call<int32_t>(&IMirx::thermalListeningUnregister, handle), 0);
}

TEST_P(MirxTest, propertyHasAtMost255Characters) {
    const std::string key = "vts.mirx", longest(255, 'x');
    const Sentence sentence("A property has at most 255 characters; a longer value is refused.");
    EXPECT_EQ(call<int32_t>(&IMirx::propertySet, key, longest), 0);
    EXPECT_NE(call<int32_t>(&IMirx::propertySet, key, longest + 'x'), 0);
    EXPECT_EQ(call<std::string>(&IMirx::propertyGet, key), longest);
    EXPECT_EQ(call<int32_t>(&IMirx::propertySet, key, std::string()), 0);
    EXPECT_EQ(call<std::string>(&IMirx::propertyGet, key), "");
}

TEST_P(MirxTest, ruleSetsResourcesUntilStatusZero) {
    const auto before = shown();
    const Data data = {element(kResource, kValue)};
    const Sentence sentence("A rule sets its resources until its status is 0.");
    call<int32_t>(&IMirx::ruleCtl, kRule, 1, data);
    EXPECT_EQ(shown(), kValue);
    call<int32_t>(&IMirx::ruleCtl, kRule, 0, Data());
    EXPECT_EQ(shown(), before);
}

TEST_P(MirxTest, emptyListsAndAbsentTextsAreValid) {
    MirxRequestParcel odd = parcel(kEventAcquire, {element(0), element(0, "")});
    odd.stringList = {std::nullopt, "", "text"};
    odd.numbers = std::vector<int32_t>();
    const Sentence sentence(
            "A list without elements is a valid request, and so is an absent text.");
    EXPECT_GT(request(odd), 0);
    for (const int32_t kind : {kResourceControl, kEventAcquire, kPlatformControl}) {
        EXPECT_GT(request(parcel(kind, {})), 0) << "kind " << kind;
    }
    EXPECT_TRUE(ask(kStateQuery).empty());
}

TEST_P(MirxTest, queriesHaveTheElementsOfTheTable) {
    MirxRequestData byPath;
    byPath.path = "/vts/mirx";
    const Sentence sentence("The answers to queries have the elements of the table.");
    const Data state = ask(kStateQuery, {element(kResource), byPath, element(kResource)});
    ASSERT_EQ(state.size(), 3u);
    EXPECT_EQ(state[0].id, kResource);
    EXPECT_EQ(state[1].path, byPath.path);
    EXPECT_TRUE(state[0].value.has_value());
    for (const int32_t kind : {kFeatureQuery, kPowerModeQuery, kPowerConsumptionQuery}) {
        const Data answer = ask(kind, {element(1, "0 1 35")});
        ASSERT_FALSE(answer.empty()) << "kind " << kind;
        EXPECT_TRUE(isNumber(answer[0].value)) << "kind " << kind;
        if (kind == kFeatureQuery) EXPECT_EQ(answer.size(), 1u);
    }
    hold(kValue);
    const Data history = ask(kHistoryQuery), dataset = ask(kDatasetFetch);
    EXPECT_FALSE(history.empty() || dataset.empty());
    for (const MirxRequestData& entry : history) EXPECT_TRUE(entry.extra.has_value());
    for (const MirxRequestData& entry : dataset) EXPECT_TRUE(entry.value.has_value());
}

TEST_P(MirxTest, diagnosticsAreAccepted) {
    const Sentence sentence("Every diagnostic code is accepted.");
    for (const int32_t code : {0, 1, 2, 3, 4, 5, 6, 7, 8, 11, 10}) {
        EXPECT_GE(call<int32_t>(&IMirx::request, parcel(kDiagnostics, {element(code)})), 1) << code;
    }
}

TEST_P(MirxTest, manyClientsAreServedAtOnce) {
    const Sentence sentence("A service answers many clients at once.");
    std::atomic<int> wrong = 0;
    std::array<std::thread, 8> clients;
    for (std::thread& client : clients) {
        client = std::thread([&] {
            for (int n = 0; n < 50; ++n) {
                int32_t handle = -1, released = -1;
                mirx->request(parcel(kEventAcquire, {element(0)}), &handle);
                wrong += handle <= 0 || !mirx->release(handle, &released).isOk() || released != 0;
            }
        });
    }
    for (std::thread& client : clients) client.join();
    EXPECT_EQ(wrong, 0) << "of 400 pairs of request and release";
}

TEST_P(MirxTest, senselessParcelsAreAnswered) {
    const Sentence sentence("A parcel that makes no sense is answered, and the service goes on.");
    AIBinder* binder = mirx->asBinder().get();
    const std::vector<std::vector<int32_t>> contents = {
            {}, {-1}, {0, 0, 0}, {1, 0x7fffffff, 0x7fffffff}, std::vector<int32_t>(100, 1)};
    for (transaction_code_t code = 1; code <= 20; ++code) {
        for (const std::vector<int32_t>& numbers : contents) {
            AParcel *in = nullptr, *out = nullptr;
            ASSERT_EQ(AIBinder_prepareTransaction(binder, &in), STATUS_OK) << code;
            for (const int32_t number : numbers) AParcel_writeInt32(in, number);
            AIBinder_transact(binder, code, &in, &out, 0);
            AParcel_delete(out);
        }
    }
    EXPECT_EQ(AIBinder_ping(binder), STATUS_OK);
    EXPECT_GT(hold(kValue), 0);
}

// A set: the device's and the framework's manifest may declare the same instance.
static std::set<std::string> declaredInstances() {
    std::set<std::string> instances;
    AServiceManager_forEachDeclaredInstance(
            IMirx::descriptor, &instances, [](const char* instance, void* set) {
                static_cast<std::set<std::string>*>(set)->insert(std::string(IMirx::descriptor) +
                                                                 "/" + instance);
            });
    return instances;
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(MirxTest);
INSTANTIATE_TEST_SUITE_P(Declared, MirxTest, testing::ValuesIn(declaredInstances()),
                         [](const testing::TestParamInfo<std::string>& info) {
                             return info.param.substr(info.param.rfind('/') + 1);
                         });

int main(int argc, char** argv) {
    otherClients.prepare();
    testing::InitGoogleTest(&argc, argv);
    ABinderProcess_setThreadPoolMaxThreadCount(2);
    ABinderProcess_startThreadPool();
    const int result = RUN_ALL_TESTS();
    // Threads of the transport may still run.
    _exit(result);
}
