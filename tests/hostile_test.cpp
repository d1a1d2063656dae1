// Tests with a service that gives bad answers, does not answer, or dies during calls.
#include <latch>
#include <thread>

#include <android/binder_parcel_utils.h>
#include <binder/IServiceManager.h>

#include <dov/dov.h>

#include "host/services/registration.h"
#include "tests/support/client_test.h"
#include "tests/support/cut_connection.h"
#include "tests/support/operations.h"
#include "tests/support/raw_service.h"

namespace {

constexpr int kN = 5;  // the number that every operation is called with

using Words = std::vector<int32_t>;

struct Answer {
    std::string name;
    Words words;  // the reply
    binder_status_t status = STATUS_OK;  // of the transaction
};

// Answers that are bad for operations with this kind of reply.
std::vector<Answer> badAnswersTo(Reply reply) {
    std::vector<Answer> answers = {
            {"nothing at all", {}},
            {"an exception without its message", {EX_ILLEGAL_STATE}},
            {"an error of the service", {EX_SERVICE_SPECIFIC, -1, 0, 4711}},
            {"an unknown exception", {42, -1, 0}},
            {"a stack trace of negative size", {EX_SECURITY, -1, -4}},
            {"a fat header beyond the reply", {-128, INT32_MAX}},
            {"a dead object", {}, STATUS_DEAD_OBJECT},
            {"an unknown transaction", {}, STATUS_UNKNOWN_TRANSACTION},
    };
    std::vector<Answer> more;
    if (reply == Reply::kNumber) more = {{"no number", {0}}};
    if (reply == Reply::kText) {
        more = {{"no text", {0}},
                {"a null text", {0, -1}},
                {"a text without its end", {0, 100, 0x6161}}};
    }
    if (reply == Reply::kData) {
        more = {{"no list", {0}},
                {"a list of negative length", {0, -2}},
                {"a list of two thousand million", {0, INT32_MAX}},
                {"a list without its elements", {0, 3}},
                {"a null element", {0, 1, 0, 0, 0}},
                {"an element too small for its size", {0, 1, 1, 3, 0, 0}},
                {"an element too large for a parcel", {0, 1, 1, INT32_MAX, 0, 0}},
                {"the second of two is missing", {0, 2, 1, 24, kN, 0, -1, -1, -1}}};
    }
    answers.insert(answers.end(), more.begin(), more.end());
    return answers;
}

binder_status_t write(const Answer& answer, AParcel* out) {
    for (const int32_t word : answer.words) AParcel_writeInt32(out, word);
    return answer.status;
}

}  // namespace

class HostileTest : public ClientTest {
  protected:
    void SetUp() override {
        if (overDriver()) GTEST_SKIP() << "the relay forwards only valid calls and answers";
    }

    // Serves `answer` until the test ends.
    void serveRaw(std::function<binder_status_t(AParcel* out)> answer) {
        serve(makeRawService([live = mLive, answer = std::move(answer)](
                                     transaction_code_t, const AParcel*, AParcel* out) {
            return *live ? answer(out) : STATUS_UNKNOWN_ERROR;
        }));
    }

    // Writes the answer that `service` would give.
    binder_status_t writeGood(Reply reply, AParcel* out) const {
        AParcel_writeInt32(out, EX_NONE);
        switch (reply) {
            case Reply::kNumber: return AParcel_writeInt32(out, service->answer);
            case Reply::kText: return AParcel_writeString(out, service->property.data(), 1);
            case Reply::kData: return ndk::AParcel_writeVector(out, service->state);
            default: return STATUS_OK;
        }
    }

    // Keeps the connection open while no binding uses it: connecting takes longer than a call.
    void keepConnection() {
        if (mConnection == nullptr || !mConnection->isBinderAlive()) {
            mConnection =
                    android::defaultServiceManager()->checkService(android::String16(kServiceName));
        }
    }

    // The number of failed calls in the log.
    ptrdiff_t failures() {
        const std::vector<LogLine> lines = log.take();
        return std::count_if(lines.begin(), lines.end(), [](const LogLine& line) {
            return line.text.ends_with(": mirx HAL service not available");
        });
    }

    ~HostileTest() override {
        endRegistration();
        *mLive = false;
    }

  private:
    const std::shared_ptr<std::atomic<bool>> mLive = std::make_shared<std::atomic<bool>>(true);
    android::sp<android::IBinder> mConnection;
};

TEST_F(HostileTest, badAnswerFailsOnlyTheCurrentCall) {
    answerThree();
    std::atomic<const Answer*> bad = nullptr;
    std::atomic<Reply> reply = Reply::kNone;
    serveRaw([&](AParcel* out) {
        const Answer* answer = bad;
        return answer != nullptr ? write(*answer, out) : writeGood(reply, out);
    });
    for (const Operation& operation : operations()) {
        if (operation.reply == Reply::kOneWay) continue;
        reply = operation.reply;
        for (const Answer& answer : badAnswersTo(operation.reply)) {
            SCOPED_TRACE(operation.name + (": " + answer.name));
            keepConnection();
            bad = &answer;
            log.take();
            EXPECT_EQ(operation.call(kN), operation.failed);
            EXPECT_EQ(failures(), 1);
            bad = nullptr;
            EXPECT_EQ(operation.call(kN), operation.result);
            EXPECT_EQ(failures(), 0);
            endRegistration();
        }
    }
}

// A later version of the service may send more than this version reads.
TEST_F(HostileTest, unknownFieldsAndExtraDataAreSkipped) {
    const Words replies[] = {
            {0, 1, 1, 28, kN, 0, -1, -1, -1, 4711},  // an additional field
            {0, 1, 1, 12, kN, 0},  // an element of an older version, with fewer fields
            {0, 1, 1, 24, kN, 0, -1, -1, -1, 1, 2, 3, 4},  // data after the list
            {-128, 8, 0, 1, 1, 24, kN, 0, -1, -1, -1},  // a fat header
            {0, 1, 1, 24, kN, 0, 1 << 20, 0x610061},  // a text beyond the reply: absent
    };
    const Words* words = nullptr;
    serveRaw([&](AParcel* out) { return write({"", *words}, out); });
    for (const Words& reply : replies) {
        words = &reply;
        std::list<DovClient::Resource> asked = {{kN, {}}}, out;
        EXPECT_EQ(mirxHalclient::mirxResStateRequest(asked, 1, out), 1);
        EXPECT_EQ(shown(out), "{5 ''}");
        EXPECT_THROW(DovGetFeatureStatus(kN), std::bad_optional_access);
        EXPECT_EQ(failures(), 0);
    }
}

// A list of three elements ends after the first. libbinder has already allocated three.
TEST_F(HostileTest, truncatedReplyIsLoggedWithItsSize) {
    serveRaw([](AParcel* out) { return write({"", {0, 3, 1, 24, kN, 0, -1, -1, -1}}, out); });
    std::string history;
    std::vector<DovClient::Resource> resources = {{kN, "kept"}};
    const struct {
        std::function<int32_t()> query;
        std::string lastLine;
    } cases[] = {
            {[&] { return DovGetHistory(history); },
             "failed to get history or return vector empty, data vector size 3"},
            {[] { return DovGetPMStatus(4); },
             "failed to get power mode status, mode 4, data vector size 3"},
            {[] { return DovGetFeatureStatus(kN); }, "failed to get resource value, 3"},
            {[&] { return DovMutiResStateRequest(resources); },
             "DovMutiResStateRequest() failed : mirx HAL service not available"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.query(), -1);
        EXPECT_EQ(log.take().back().text, c.lastLine);
    }
    EXPECT_EQ(shown(resources), "{5 'kept'}");
    EXPECT_EQ(history, "");
}

TEST_F(HostileTest, unansweredCallDoesNotBlockOtherCalls) {
    answerThree();
    for (const Operation& operation : operations()) {
        if (operation.reply == Reply::kOneWay) continue;
        SCOPED_TRACE(operation.name);
        std::latch stuck(1), letGo(1);
        std::atomic<bool> first = true;
        service->whenCalled([&](const std::string& called) {
            if (called != operation.service || !first.exchange(false)) return;
            stuck.count_down();
            letGo.wait();
        });
        std::string outcome;
        std::thread caller([&] {
            outcome = operation.call(kN);
            endRegistration();
        });
        stuck.wait();
        EXPECT_EQ(dovInit(), 0);
        EXPECT_EQ(DovEventAcquire(1, "p", "i", 0, {}), 3);
        EXPECT_EQ(mirxHalclient::mirxPropertySet("key", "value"), 3);
        EXPECT_EQ(mirxHalclient::mirxResCtlRelease(1), 3);
        letGo.count_down();
        caller.join();
        EXPECT_EQ(outcome, operation.result) << "a late answer was lost";
    }
}

// A parcel is limited to 100 KB over sockets; a character takes two bytes, an element 40. A larger
// one fails the call and may close the connection. The next call connects again.
TEST_F(HostileTest, largeParcelsArriveOrFailTheCall) {
    using Resources = std::list<DovClient::Resource>;
    const std::pair<const char*, std::function<bool(size_t size)>> cases[] = {
            {"a value",
             [](size_t size) {
                 return DovResAcquire({{7, std::string(size, 'x')}}, "", "i", 0) == 1;
             }},
            {"many elements",
             [](size_t size) {
                 Resources many(size / 20, {7, "1"});
                 return mirxHalclient::mirxResCtlRequest(0, many, 1) == 1;
             }},
            {"an answer to the client",
             [](size_t) {
                 Resources asked = {{7, {}}}, out;
                 return mirxHalclient::mirxResStateRequest(asked, 1, out) == 1;
             }},
            {"an answer to the event interface",
             [](size_t size) {
                 std::string value = "kept";
                 DovResStateRequest(7, value);
                 return value.size() == size;
             }},
    };
    for (const auto& [name, call] : cases) {
        for (const size_t size : {40'000u, 100'000u, 1'000'000u}) {
            SCOPED_TRACE(name + (" of " + std::to_string(size)));
            service->state = {element(7, std::string(size, 'x'))};
            EXPECT_EQ(call(size), size == 40'000);
            EXPECT_TRUE(eventually([] { return dovInit() == 0; }));
            EXPECT_TRUE(eventually([] { return mirxHalclient::mirxResCtlRelease(1) == 1; }));
        }
    }
}

// The service dies during a look-up, a query of its interface, a call, a callback and an answer.
// Every call must return, and later calls must reach the next service.
TEST_F(HostileTest, callsSurviveAServiceDeathAtAnyByte) {
    const std::string registration = hostbinder::registrationPath(folder(), kServiceName);
    service->whenCalled([this](const std::string& operation) {
        if (operation != "listeningRegister") return;
        for (const RecordedCall& call : service->take()) {
            if (call.callback) call.callback->onCallback({element(1)});
        }
    });
    // Calls through both bindings. Returns the result of a registration.
    const auto talk = [](int n) {
        dovInit();
        DovEventAcquire(1, "p", "i", 0, {});
        std::list<DovClient::Resource> resources = {{n, {}}}, out;
        const int registered =
                mirxHalclient::mirxResListeningRegister(resources, 1, std::make_shared<Heard>());
        mirxHalclient::mirxResStateRequest(resources, 1, out);
        mirxHalclient::mirxResCtlRelease(1);
        return registered;
    };
    const auto passing = [&](size_t bytes, int n) {
        // Empties both bindings, so that they make new connections.
        service->failing = true;
        dovInit();
        mirxHalclient::mirx_init();
        service->failing = false;
        CutConnection connection(registration, bytes, [this] { serve(); });
        const int registered = talk(n);
        return std::pair(connection.passed(), registered);
    };
    constexpr int kSteps = 60;
    service->counting = true;
    const size_t all = passing(SIZE_MAX, 1).first;
    EXPECT_GT(all, 500u);
    serve();
    for (int step = 0; step < kSteps; ++step) {
        SCOPED_TRACE(step);
        const int n = 2 + step;
        const int before = passing(all * static_cast<size_t>(step) / kSteps, n).second;
        EXPECT_TRUE(eventually([] { return dovInit() == 0; }));
        EXPECT_TRUE(eventually([] { return mirxHalclient::mirxResCtlRelease(1) != -1; }));
        // The registry holds exactly what the caller was told: only a failure can be repeated.
        if (before != -1) {
            EXPECT_EQ(talk(n), -1);
        } else {
            EXPECT_TRUE(eventually([&] { return talk(n) != -1; }));
        }
    }
}

// Cuts the connection after each byte of a look-up. Both sides must be able to connect again.
TEST_F(HostileTest, cutDuringConnectEndsNeitherSide) {
    const std::string registration = hostbinder::registrationPath(folder(), kServiceName);
    const auto connect = [] {
        return android::defaultServiceManager()->checkService(android::String16(kServiceName));
    };
    const auto connecting = [&](size_t bytes) {
        CutConnection connection(registration, bytes, [] {});
        connect();
        return connection.passed();
    };
    const size_t all = connecting(SIZE_MAX);
    EXPECT_GT(all, 300u);
    for (size_t bytes = 0; bytes < all; ++bytes) {
        serve();
        connecting(bytes);
        serve();
        EXPECT_NE(connect(), nullptr) << "after a cut at " << bytes;
    }
}
