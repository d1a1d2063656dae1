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

struct Answer {
    std::string name;
    std::vector<int32_t> words;  // the reply
    std::optional<Reply> only = {};  // bad only for operations with this kind of reply
    binder_status_t status = STATUS_OK;  // of the transaction
};

const Answer kBadAnswers[] = {
        {"nothing at all", {}},
        {"an exception without its message", {EX_ILLEGAL_STATE}},
        {"an error of the service", {EX_SERVICE_SPECIFIC, -1, 0, 4711}},
        {"a fat header beyond the reply", {-128, INT32_MAX}},
        {"a dead object", {}, {}, STATUS_DEAD_OBJECT},
        {"an unknown transaction", {}, {}, STATUS_UNKNOWN_TRANSACTION},
        {"no number", {0}, Reply::kNumber},
        {"a null text", {0, -1}, Reply::kText},
        {"a text without its end", {0, 100, 0x6161}, Reply::kText},
        {"a list of negative length", {0, -2}, Reply::kData},
        {"a list without its elements", {0, 3}, Reply::kData},
        {"a null element", {0, 1, 0, 0, 0}, Reply::kData},
        {"an element too small for its size", {0, 1, 1, 3, 0, 0}, Reply::kData},
        {"the second of two is missing", {0, 2, 1, 24, kN, 0, -1, -1, -1}, Reply::kData},
};

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

    // Serves `answer` until the test ends: then `service` is failing.
    void serveRaw(std::function<binder_status_t(AParcel* out)> answer) {
        serve(makeRawService([service = service, answer = std::move(answer)](
                                     transaction_code_t, const AParcel*, AParcel* out) {
            return service->failing ? STATUS_UNKNOWN_ERROR : answer(out);
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

    // The number of failed calls in the log.
    ptrdiff_t failures() {
        const std::vector<LogLine> lines = log.take();
        return std::count_if(lines.begin(), lines.end(), [](const LogLine& line) {
            return line.text.ends_with(": mirx HAL service not available");
        });
    }

    ~HostileTest() override { endRegistration(); }
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
        for (const Answer& answer : kBadAnswers) {
            if (answer.only.value_or(operation.reply) != operation.reply) continue;
            SCOPED_TRACE(operation.name + (": " + answer.name));
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

// A list of three elements ends after the first. libbinder has already allocated three.
TEST_F(HostileTest, truncatedReplyIsLoggedWithItsSize) {
    serveRaw([](AParcel* out) { return write({"", {0, 3, 1, 24, kN, 0, -1, -1, -1}}, out); });
    std::string history = "kept";
    std::vector<DovClient::Resource> resources = {{kN, "kept"}};
    const auto lastLine = [this](int32_t result) {
        EXPECT_EQ(result, -1);
        return log.take().back().text;
    };
    EXPECT_EQ(lastLine(DovGetHistory(history)),
              "failed to get history or return vector empty, data vector size 3");
    EXPECT_EQ(lastLine(DovGetPMStatus(4)),
              "failed to get power mode status, mode 4, data vector size 3");
    EXPECT_EQ(lastLine(DovGetFeatureStatus(kN)), "failed to get resource value, 3");
    EXPECT_EQ(lastLine(DovMutiResStateRequest(resources)),
              "DovMutiResStateRequest() failed : mirx HAL service not available");
    EXPECT_EQ(shown(resources) + history, "{5 'kept'}kept");
}

TEST_F(HostileTest, unansweredCallDoesNotBlockOtherCalls) {
    answerThree();
    for (const Operation& operation : operations()) {
        if (operation.reply == Reply::kOneWay) continue;
        SCOPED_TRACE(operation.name);
        std::atomic<bool> stuck = false;
        std::latch letGo(1);
        service->whenCalled([&](const std::string& called) {
            if (called == operation.service && !stuck.exchange(true)) letGo.wait();
        });
        std::string outcome;
        std::thread caller([&] {
            outcome = operation.call(kN);
            endRegistration();
        });
        EXPECT_TRUE(eventually([&] { return stuck.load(); }));
        stuck = true;  // or a call below would wait instead
        EXPECT_EQ(dovInit(), 0);
        EXPECT_EQ(DovEventAcquire(1, "p", "i", 0, {}), 3);
        EXPECT_EQ(mirxHalclient::mirxPropertySet("key", "value"), 3);
        EXPECT_EQ(mirxHalclient::mirxResCtlRelease(1), 3);
        letGo.count_down();
        caller.join();
        EXPECT_EQ(outcome, operation.result) << "a late answer was lost";
    }
}

// A parcel is limited to 100 KB over sockets; a character takes two bytes. A larger one fails the
// call and may close the connection. The next call connects again.
TEST_F(HostileTest, largeParcelsArriveOrFailTheCall) {
    for (const size_t size : {40'000u, 1'000'000u}) {
        const bool fits = size == 40'000;
        const std::string large(size, 'x');
        std::string value = "kept";
        std::list<DovClient::Resource> asked = {{7, {}}}, out;
        service->state = {element(7, large)};
        const std::pair<bool, const char*> arrived[] = {
                {DovResAcquire({{7, large}}, "", "i", 0) == 1, "a request"},
                {(DovResStateRequest(7, value), value == large), "an answer"},
                {mirxHalclient::mirxPropertySet("key", large) == 1, "the client's request"},
                {mirxHalclient::mirxResStateRequest(asked, 1, out) == 1, "the client's answer"},
        };
        for (const auto& [did, what] : arrived) EXPECT_EQ(did, fits) << what;
        EXPECT_TRUE(eventually([] { return dovInit() == 0; }));
        EXPECT_TRUE(eventually([] { return mirxHalclient::mirxResCtlRelease(1) == 1; }));
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
        std::list<DovClient::Resource> asked = {{n, {}}}, out;
        dovInit();
        DovEventAcquire(1, "p", "i", 0, {});
        const int registered = registerListener({{n, {}}}, std::make_shared<Heard>());
        mirxHalclient::mirxResStateRequest(asked, 1, out);
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
    for (int handle = service->answer; handle > 0; --handle) {
        mirxHalclient::mirxResListeningUnRegister(handle);
    }
}

// Cuts the connection after each byte of a look-up. Neither side may end: the next look-up must
// exchange as many bytes again.
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
