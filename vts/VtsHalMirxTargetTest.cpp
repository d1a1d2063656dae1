// Checks every declared service against docs/contract.md.
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <mutex>
#include <regex>
#include <set>
#include <thread>

#include <gtest/gtest.h>

#include <aidl/vendor/tavro/hardware/mirx/BnMirxCallback.h>
#include <aidl/vendor/tavro/hardware/mirx/IMirx.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>

#include "aidl/request_kinds.h"

using namespace aidl::vendor::tavro::hardware::mirx;
using namespace mirx;
using namespace std::chrono_literals;
using Data = std::vector<MirxRequestData>;

namespace {

constexpr int32_t kResource = 0x01010010;  // a resource that every device has
constexpr char kValue[] = "1500000", kNewer[] = "1600000";
constexpr int32_t kNoHandle = 0x7ffffff0;  // one that no service gives out in a test

// A failure during its lifetime names this sentence of docs/contract.md.
struct Sentence : testing::ScopedTrace {
    explicit Sentence(const char* text) : ScopedTrace("docs/contract.md", 0, text) {}
};

MirxRequestData element(int32_t id, std::optional<std::string> value = {}) {
    return {id, 0, std::move(value), {}, {}};
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

const MirxRequestParcel kWatched = parcel(kStateQuery, {element(kResource)});

bool eventually(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + 3s;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(10ms);
    }
    return true;
}

std::shared_ptr<IMirx> find(const std::string& instance) {
    const std::string name = IMirx::descriptor + ("/" + instance);
    return IMirx::fromBinder(ndk::SpAIBinder(AServiceManager_checkService(name.c_str())));
}

class Listener : public BnMirxCallback {
  public:
    ndk::ScopedAStatus onCallback(const Data& data) override {
        std::lock_guard lock(mMutex);
        ++mCalls["any"];
        for (const MirxRequestData& element : data) ++mCalls[element.value.value_or("")];
        return ndk::ScopedAStatus::ok();
    }
    int calls(const std::string& value = "any") {
        std::lock_guard lock(mMutex);
        return mCalls[value];
    }

  private:
    std::mutex mMutex;
    std::map<std::string, int> mCalls;  // by value
};

// A client in a process of its own.
struct Client {
    pid_t pid;
    int32_t handle = -1;  // of its listener
};

// Connects this process and the one that starts clients, which is forked before this one has
// threads.
int clients[2];

// Registers a listener and makes requests until the process is killed.
[[noreturn]] void runClient(const std::string& instance) {
    Client client = {.pid = getpid()};
    ABinderProcess_startThreadPool();
    const auto mirx = find(instance);
    if (mirx != nullptr) {
        mirx->listeningRegister(kWatched, ndk::SharedRefBase::make<Listener>(), &client.handle);
    }
    if (write(clients[1], &client, sizeof(client)) < 0 || mirx == nullptr) _exit(1);
    for (int32_t held = -1;;) mirx->request(parcel(kEventAcquire, {element(0)}, 1), &held);
}

void startClients() {
    if (socketpair(AF_UNIX, SOCK_SEQPACKET, 0, clients) != 0) abort();
    if (fork() != 0) return;
    close(clients[0]);
    signal(SIGCHLD, SIG_IGN);  // clients leave no zombies
    char instance[200];
    for (ssize_t length; (length = read(clients[1], instance, sizeof(instance))) > 0;) {
        if (fork() == 0) runClient({instance, static_cast<size_t>(length)});
    }
    _exit(0);
}

class MirxTest : public testing::TestWithParam<std::string> {
  protected:
    void SetUp() override {
        ASSERT_TRUE(eventually([this] { return (mirx = find(GetParam())) != nullptr; }))
                << "declared, but not running";
        before = shown();
    }
    void TearDown() override {
        for (const int32_t handle : mHandles) release(handle);
    }

    // Calls an operation, which must not fail, and returns its answer.
    template <typename Result = int32_t, typename Operation, typename... Arguments>
    Result call(Operation operation, const Arguments&... arguments) {
        Result result{};
        const ndk::ScopedAStatus status = ((*mirx).*operation)(arguments..., &result);
        const Sentence sentence("A service refuses with a value, never with a failure.");
        EXPECT_TRUE(status.isOk()) << status.getDescription();
        return result;
    }
    int32_t request(const MirxRequestParcel& parcel) {
        mHandles.push_back(call(&IMirx::request, parcel));
        return mHandles.back();
    }
    int32_t hold(const std::string& value, int64_t duration = 0) {
        return request(parcel(kResourceControl, {element(kResource, value)}, duration));
    }
    int32_t release(int32_t handle) { return call(&IMirx::release, handle); }
    int32_t unlisten(int32_t handle) { return call(&IMirx::listeningUnregister, handle); }
    Data ask(int32_t kind, const Data& data = {}) {
        return call<Data>(&IMirx::stateRequest, parcel(kind, data));
    }
    std::optional<std::string> shown() {
        const auto state = call<Data>(&IMirx::stateRequest, kWatched);
        return state.empty() ? std::nullopt : state.front().value;
    }

    std::shared_ptr<IMirx> mirx;
    std::optional<std::string> before;  // what the resource shows before the test
    const std::shared_ptr<Listener> listener = ndk::SharedRefBase::make<Listener>();

  private:
    std::vector<int32_t> mHandles;
};

}  // namespace

TEST_P(MirxTest, hasVersionAndHashOfTheInterface) {
    const Sentence sentence("A service has the version and the hash of the frozen interface.");
    EXPECT_GE(call(&IMirx::getInterfaceVersion), 1);
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
            EXPECT_TRUE(handle > 0 && handles.insert(handle).second) << kind << ": " << handle;
        }
    }
}

TEST_P(MirxTest, unknownHandleIsAnsweredWithMinusOne) {
    const Sentence sentence("A handle that the service does not know is answered with -1.");
    for (const auto operation :
         {&IMirx::release, &IMirx::listeningUnregister, &IMirx::thermalListeningUnregister}) {
        for (const int32_t handle : {-1, 0, kNoHandle}) {
            EXPECT_EQ(call(operation, handle), -1) << handle;
        }
    }
}

TEST_P(MirxTest, newestHoldDeterminesTheValue) {
    const int32_t older = hold(kValue), newer = hold(kNewer);
    const Sentence sentence("A resource shows the value of its newest hold.");
    EXPECT_EQ(shown(), kNewer);
    const Sentence released("`release` answers 0 when the handle held something, else -1.");
    EXPECT_EQ(release(newer), 0);
    EXPECT_EQ(release(newer), -1);
    EXPECT_EQ(shown(), kValue);
    EXPECT_EQ(release(older), 0);
    EXPECT_EQ(shown(), before);
}

TEST_P(MirxTest, holdEndsAfterItsDuration) {
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
    const int32_t handle = call(&IMirx::listeningRegister, kWatched, listener);
    const int32_t otherHandle = call(&IMirx::listeningRegister, kWatched, other);
    const Sentence sentence("A listener is called when its resource shows another value.");
    release(hold(kValue));
    EXPECT_TRUE(eventually([&] { return listener->calls(kValue) > 0; }));
    const Sentence ended("A listener is not called for changes after it was unregistered.");
    EXPECT_EQ(unlisten(handle), 0);
    hold(kNewer);
    EXPECT_TRUE(eventually([&] { return other->calls(kNewer) > 0; }));
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(listener->calls(kNewer), 0);
    EXPECT_EQ(unlisten(handle), -1);
    EXPECT_EQ(unlisten(otherHandle), 0);
}

TEST_P(MirxTest, listenerOfDeadClientIsDropped) {
    Client client;
    ASSERT_GT(write(clients[0], GetParam().data(), GetParam().size()), 0);
    ASSERT_GT(read(clients[0], &client, sizeof(client)), 0);
    std::this_thread::sleep_for(100ms);  // so that it dies during a request
    kill(client.pid, SIGKILL);
    const Sentence sentence("A registration ends with the process of its callback.");
    EXPECT_GT(client.handle, 0);
    std::this_thread::sleep_for(1s);
    EXPECT_EQ(unlisten(client.handle), -1);
}

TEST_P(MirxTest, requestCallbackIsCalledOnce) {
    MirxRequestParcel withCallback = parcel(kResourceControl, {element(kResource, kValue)});
    const Sentence sentence("The callback of a request is called once.");
    // The second callback comes after every call of the first.
    for (const auto& callback : {listener, ndk::SharedRefBase::make<Listener>()}) {
        withCallback.callback = callback;
        request(withCallback);
        EXPECT_TRUE(eventually([&] { return callback->calls() > 0; }));
    }
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(listener->calls(), 1);
}

TEST_P(MirxTest, thermalListenerIsCalledOnChange) {
    const std::vector<int32_t> items = {3};
    const int32_t handle = call(&IMirx::thermalListeningRegister, items, listener);
    const Sentence sentence("A thermal listener is called when its item has another level.");
    for (const char* level : {"4", "5"}) {
        EXPECT_GE(request(parcel(kThermalNotification, {element(items[0], level)})), 1);
    }
    EXPECT_TRUE(eventually([&] { return listener->calls("5") > 0; }));
    EXPECT_EQ(call(&IMirx::thermalListeningUnregister, handle), 0);
}

TEST_P(MirxTest, propertyHasAtMost255Characters) {
    const std::string key = "vts.mirx", longest(255, 'x');
    const Sentence sentence("A property has at most 255 characters; a longer value is refused.");
    for (const std::string& value : {longest, std::string()}) {
        EXPECT_EQ(call(&IMirx::propertySet, key, value), 0);
        EXPECT_NE(call(&IMirx::propertySet, key, longest + 'x'), 0);
        EXPECT_EQ(call<std::string>(&IMirx::propertyGet, key), value);
    }
}

TEST_P(MirxTest, ruleSetsResourcesUntilStatusZero) {
    const int32_t rule = 0x5eed;
    const Sentence sentence("A rule sets its resources until its status is 0.");
    call(&IMirx::ruleCtl, rule, 1, Data{element(kResource, kValue)});
    EXPECT_EQ(shown(), kValue);
    call(&IMirx::ruleCtl, rule, 0, Data());
    EXPECT_EQ(shown(), before);
}

TEST_P(MirxTest, emptyListsAndAbsentTextsAreValid) {
    MirxRequestParcel odd = parcel(kEventAcquire, {element(0), element(0, "")});
    odd.stringList = {std::nullopt, "", "text"};
    odd.numbers = std::vector<int32_t>();
    const Sentence rule("A list without elements is a valid request, and so is an absent text.");
    EXPECT_GT(request(odd), 0);
    for (const int32_t kind : {kResourceControl, kEventAcquire, kPlatformControl}) {
        EXPECT_GT(request(parcel(kind, {})), 0) << kind;
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
        EXPECT_TRUE(std::regex_match(answer[0].value.value_or(""), std::regex("-?[0-9]+")));
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
        EXPECT_GE(call(&IMirx::request, parcel(kDiagnostics, {element(code)})), 1) << code;
    }
}

TEST_P(MirxTest, manyClientsAreServedAtOnce) {
    const Sentence sentence("A service answers many clients at once.");
    std::atomic<int> wrong = 0;
    const auto run = [&] {
        for (int n = 0; n < 50; ++n) {
            int32_t handle = -1, released = -1;
            mirx->request(parcel(kEventAcquire, {element(0)}), &handle);
            wrong += handle <= 0 || !mirx->release(handle, &released).isOk() || released != 0;
        }
    };
    std::thread threads[8];
    for (std::thread& thread : threads) thread = std::thread(run);
    for (std::thread& thread : threads) thread.join();
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
                static_cast<std::set<std::string>*>(set)->insert(instance);
            });
    return instances;
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(MirxTest);
INSTANTIATE_TEST_SUITE_P(Declared, MirxTest, testing::ValuesIn(declaredInstances()),
                         [](const auto& info) { return info.param; });

int main(int argc, char** argv) {
    startClients();
    testing::InitGoogleTest(&argc, argv);
    ABinderProcess_setThreadPoolMaxThreadCount(2);
    ABinderProcess_startThreadPool();
    _exit(RUN_ALL_TESTS());  // threads of the transport may still run
}
