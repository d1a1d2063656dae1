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
    binder_status_t status = STATUS_OK;  // of the transaction
    Words words = {};  // the reply
};

// Answers that are bad for every operation with a reply.
std::vector<Answer> badAnswers() {
    std::vector<Answer> answers = {
            {"nothing at all"},
            {"an exception without its message", STATUS_OK, {EX_ILLEGAL_STATE}},
            {"an unknown exception", STATUS_OK, {42, -1, 0}},
            {"a stack trace beyond the reply", STATUS_OK, {EX_SECURITY, -1, INT32_MAX}},
            {"a stack trace of negative size", STATUS_OK, {EX_SECURITY, -1, -4}},
            {"a message beyond the reply", STATUS_OK, {EX_SECURITY, 1 << 20, 0}},
            {"a fat header beyond the reply", STATUS_OK, {-128, INT32_MAX}},
            {"an exception's number is missing", STATUS_OK, {EX_SERVICE_SPECIFIC, -1, 0}},
            {"an exception's parcelable is missing", STATUS_OK, {EX_PARCELABLE, -1, 0}},
    };
    for (const int32_t code : {EX_SECURITY, EX_BAD_PARCELABLE, EX_ILLEGAL_ARGUMENT, EX_NULL_POINTER,
                               EX_ILLEGAL_STATE, EX_NETWORK_MAIN_THREAD, EX_UNSUPPORTED_OPERATION,
                               EX_SERVICE_SPECIFIC, EX_PARCELABLE, EX_TRANSACTION_FAILED}) {
        answers.push_back({"exception " + std::to_string(code), STATUS_OK, {code, -1, 0, 4, 0}});
    }
    for (const binder_status_t status :
         {STATUS_UNKNOWN_ERROR, STATUS_NO_MEMORY, STATUS_INVALID_OPERATION, STATUS_BAD_VALUE,
          STATUS_BAD_TYPE, STATUS_NAME_NOT_FOUND, STATUS_PERMISSION_DENIED, STATUS_NO_INIT,
          STATUS_ALREADY_EXISTS, STATUS_DEAD_OBJECT, STATUS_FAILED_TRANSACTION, STATUS_BAD_INDEX,
          STATUS_NOT_ENOUGH_DATA, STATUS_WOULD_BLOCK, STATUS_TIMED_OUT, STATUS_UNKNOWN_TRANSACTION,
          STATUS_FDS_NOT_ALLOWED, STATUS_UNEXPECTED_NULL}) {
        answers.push_back({"status " + std::to_string(status), status});
    }
    return answers;
}

// Answers that are bad for operations with this kind of reply: an OK status and wrong data.
std::vector<Answer> badAnswersTo(Reply reply) {
    const auto ok = [](const char* name, Words words) {
        words.insert(words.begin(), 0);
        return Answer{name, STATUS_OK, words};
    };
    switch (reply) {
        case Reply::kNumber: return {ok("no number", {})};
        case Reply::kText:
            return {ok("no text", {}), ok("a null text", {-1}), ok("a negative length", {-2}),
                    ok("a text without its end", {100, 0x6161}), ok("no memory", {INT32_MAX})};
        case Reply::kData:
            return {ok("no list", {}),
                    ok("a null list", {-1}),
                    ok("a list of negative length", {-2}),
                    ok("a list of two thousand million", {INT32_MAX}),
                    ok("a list without its elements", {3}),
                    ok("a null element", {1, 0, 0, 0}),
                    ok("an element without its fields", {1, 1}),
                    ok("an element of negative size", {1, 1, -8, 0, 0}),
                    ok("an element too small for its size", {1, 1, 3, 0, 0}),
                    ok("an element too large for a parcel", {1, 1, INT32_MAX, 0, 0}),
                    ok("the second of two is missing", {2, 1, 24, kN, 0, -1, -1, -1})};
        default: return {};
    }
}

MirxRequestData goodElement() {
    MirxRequestData data = element(kN, "3");
    data.path = "/5";
    data.extra = "entry";
    return data;
}

binder_status_t writeGood(Reply reply, AParcel* out) {
    AParcel_writeInt32(out, EX_NONE);
    switch (reply) {
        case Reply::kNumber: return AParcel_writeInt32(out, 7);
        case Reply::kText: return AParcel_writeString(out, "text", 4);
        case Reply::kData: return ndk::AParcel_writeVector(out, std::vector{goodElement()});
        default: return STATUS_OK;
    }
}

binder_status_t writeBad(const Answer& answer, AParcel* out) {
    for (const int32_t word : answer.words) AParcel_writeInt32(out, word);
    return answer.status;
}

// Whether the caller can tell a failure. Some operations return nothing, or hide failures.
bool tells(const Operation& operation) {
    return *operation.failed != '\0' && std::string(operation.name) != "DovNotifyWapper" &&
           operation.reply != Reply::kOneWay;
}

}  // namespace

class HostileTest : public ClientTest {
  protected:
    void SetUp() override {
        if (overDriver()) GTEST_SKIP() << "the relay forwards only valid calls and answers";
    }

    // Serves `answer` until the test ends.
    void serveRaw(RawAnswer answer) {
        serve(makeRawService([live = mLive, answer = std::move(answer)](
                                     transaction_code_t code, const AParcel* in, AParcel* out) {
            return *live ? answer(code, in, out) : STATUS_UNKNOWN_ERROR;
        }));
    }

    // Keeps the connection open while no binding uses it: connecting takes longer than a call.
    void keepConnection() {
        if (mConnection == nullptr || !mConnection->isBinderAlive()) {
            mConnection =
                    android::defaultServiceManager()->checkService(android::String16(kServiceName));
        }
    }

    ptrdiff_t failures() {
        const auto lines = log.take();
        return std::count_if(lines.begin(), lines.end(), [](const LogLine& line) {
            return line.text.ends_with("failed: mirx HAL service not available") ||
                   line.text.ends_with("failed : mirx HAL service not available");
        });
    }

    ~HostileTest() override {
        endRegistration();
        *mLive = false;
        std::lock_guard lock(request_callback_mutex);
        request_callbacks.clear();
    }

  private:
    const std::shared_ptr<std::atomic<bool>> mLive = std::make_shared<std::atomic<bool>>(true);
    android::sp<android::IBinder> mConnection;
};

TEST_F(HostileTest, badAnswerFailsOnlyTheCurrentCall) {
    std::atomic<const Answer*> bad = nullptr;
    std::atomic<Reply> reply = Reply::kNone;
    serveRaw([&](transaction_code_t, const AParcel*, AParcel* out) {
        const Answer* answer = bad;
        return answer != nullptr ? writeBad(*answer, out) : writeGood(reply, out);
    });
    for (const Operation& operation : operations()) {
        reply = operation.reply;
        std::vector<Answer> answers = badAnswers();
        const std::vector<Answer> more = badAnswersTo(operation.reply);
        answers.insert(answers.end(), more.begin(), more.end());
        for (const Answer& answer : answers) {
            SCOPED_TRACE(operation.name + (": " + answer.name));
            keepConnection();
            bad = &answer;
            log.take();
            EXPECT_EQ(operation.call(kN), operation.failed);
            if (operation.reply != Reply::kOneWay) {
                EXPECT_EQ(failures(), 1);
            }
            bad = nullptr;
            const std::string outcome = operation.call(kN);
            EXPECT_EQ(failures(), 0);
            if (tells(operation)) {
                EXPECT_NE(outcome, operation.failed);
            }
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
    serveRaw([&](transaction_code_t, const AParcel*, AParcel* out) {
        return writeBad({"", STATUS_OK, *words}, out);
    });
    for (const Words& reply : replies) {
        words = &reply;
        std::list<DovClient::Resource> asked = {{kN, {}}}, out;
        EXPECT_EQ(mirxHalclient::mirxResStateRequest(asked, 1, out), 1);
        EXPECT_EQ(plain(out), OpcodesAndValues({{kN, ""}}));
        EXPECT_THROW(DovGetFeatureStatus(kN), std::bad_optional_access);
        EXPECT_EQ(failures(), 0);
    }
}

// A list of three elements ends after the first. libbinder has already allocated three.
TEST_F(HostileTest, truncatedReplyIsLoggedWithItsSize) {
    serveRaw([](transaction_code_t, const AParcel*, AParcel* out) {
        return writeBad({"", STATUS_OK, {0, 3, 1, 24, kN, 0, -1, -1, -1}}, out);
    });
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
        log.take();
        EXPECT_EQ(c.query(), -1);
        EXPECT_EQ(log.take().back().text, c.lastLine);
    }
    EXPECT_EQ(resources[0].value, "kept");
}

TEST_F(HostileTest, unansweredCallDoesNotBlockOtherCalls) {
    for (const Operation& operation : operations()) {
        if (operation.reply == Reply::kOneWay) continue;
        SCOPED_TRACE(operation.name);
        service->state = {goodElement()};
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
        EXPECT_EQ(DovEventAcquire(1, "p", "i", 0, {}), 1);
        EXPECT_EQ(mirxHalclient::mirxPropertySet("key", "value"), 1);
        EXPECT_EQ(mirxHalclient::mirxResCtlRelease(1), 1);
        letGo.count_down();
        caller.join();
        if (tells(operation)) {
            EXPECT_NE(outcome, operation.failed) << "a late answer was lost";
        }
    }
}

// A parcel is limited to 100 KB over sockets and to 1 MB by the driver. A larger one fails the call
// and may close the connection. The next call connects again.
TEST_F(HostileTest, largeParcelsArriveOrFailTheCall) {
    using Resources = std::list<DovClient::Resource>;
    const struct {
        const char* name;
        size_t largest;  // a character takes two bytes, an element 40
        std::function<bool(size_t size)> call;
    } cases[] = {
            {"a value", 40'000,
             [](size_t size) {
                 return DovResAcquire({{7, std::string(size, 'x')}}, "", "i", 0) == 1;
             }},
            {"a property", 40'000,
             [this](size_t size) {
                 service->take();
                 return mirxHalclient::mirxPropertySet("key", std::string(size, 'x')) == 1 &&
                        service->take().back().texts[1].size() == size;
             }},
            {"many elements", 10'000,
             [](size_t size) {
                 Resources many(size / 10, {7, "1"});
                 return mirxHalclient::mirxResCtlRequest(0, many, 1) == 1;
             }},
            {"an answer to the client", 40'000,
             [](size_t) {
                 Resources asked = {{7, {}}}, out;
                 return mirxHalclient::mirxResStateRequest(asked, 1, out) == 1;
             }},
            {"an answer to the event interface", 40'000,
             [](size_t size) {
                 std::string value = "kept";
                 DovResStateRequest(7, value);
                 return value.size() == size;
             }},
    };
    for (const auto& c : cases) {
        for (const size_t size : {10'000u, 40'000u, 100'000u, 1'000'000u}) {
            SCOPED_TRACE(c.name + (" of " + std::to_string(size)));
            service->state = {element(7, std::string(size, 'x'))};
            EXPECT_EQ(c.call(size), size <= c.largest);
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
        EXPECT_LE(connection.passed(), bytes);
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

// Cuts the connection after each byte of a look-up. Neither process may crash.
TEST_F(HostileTest, cutDuringConnectEndsNeitherSide) {
    const std::string registration = hostbinder::registrationPath(folder(), kServiceName);
    const auto connecting = [&](size_t bytes) {
        CutConnection connection(registration, bytes, [] {});
        android::defaultServiceManager()->checkService(android::String16(kServiceName));
        return connection.passed();
    };
    const size_t all = connecting(SIZE_MAX);
    EXPECT_GT(all, 300u);
    for (size_t bytes = 0; bytes < all; ++bytes) {
        serve();
        EXPECT_EQ(connecting(bytes), bytes);
    }
}
