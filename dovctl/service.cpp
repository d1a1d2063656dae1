// Calls of the service through the library, and what to say when one failed.
#include "dovctl/service.h"

#include <algorithm>
#include <future>
#include <iterator>
#include <memory>
#include <thread>

#include <android/binder_manager.h>
#include <dov/halclient.h>

#include "common/service.h"
#include "dovctl/library_log.h"
#include "dovctl/message_size.h"
#include "dovctl/process.h"

namespace dovctl {

using dovcommon::kServiceName;

namespace {

// The library reports only in its log that it could not call or that the status was not OK.
constexpr const char* kFailures[] = {"mirx HAL service not available", "Mirx HAL Service not found",
                                     "Unable to link to"};
// The log line of libbinder's sockets for an answer that they refuse.
constexpr char kAnswerTooLarge[] = "Transaction requested too much data allocation";

ndk::SpAIBinder lookUp() {
    return ndk::SpAIBinder(AServiceManager_checkService(kServiceName));
}

Failure serviceFailure(const std::string& why) {
    return {kNoService, std::string("service ") + kServiceName + " " + why};
}

}  // namespace

ServiceNow::ServiceNow() {
    if (!AServiceManager_isDeclared(kServiceName)) {
        absence = "is not declared";
        return;
    }
    binder = lookUp();
    if (binder.get() == nullptr) absence = "is declared but not running";
}

Failure whyFailed(const dovcommon::Transport& transport, const ServiceNow& before, pid_t pid,
                  bool answerTooLarge) {
    if (before.absence != nullptr) return serviceFailure(before.absence);
    if (answerTooLarge) {
        return {kTooLarge, "the service's answer is too large for " + limitText(transport)};
    }
    if (AIBinder_isAlive(before.binder.get()) && lookUp().get() == before.binder.get()) {
        // The driver drops a message that is too large without breaking the connection.
        return {kRefused, "the service reported an error" +
                                  (transport.sockets ? std::string()
                                                     : ", or the message was too large for " +
                                                               limitText(transport))};
    }
    const Process now = serviceProcess(kPatience);
    if (pid != 0 && now.pid == pid) {
        return {kTooLarge, "the connection broke although the service's " + textOf(now) +
                                   ", lives; perhaps the message was too large for " +
                                   limitText(transport)};
    }
    const ServiceNow after;
    return serviceFailure(std::string("died meanwhile: it ") +
                          (after.absence != nullptr ? after.absence : "has been started again"));
}

std::string propertyOf(const std::string& key) {
    std::string value;
    const auto mirx = dovcommon::IMirx::fromBinder(lookUp());
    // The proxy first: the library must not meet a value that is too long.
    const bool answered = mirx != nullptr && mirx->propertyGet(key, &value).isOk();
    if (answered && value.size() > kLongestProperty) return value;
    return std::unique_ptr<char[]>(mirxHalclient::mirxPropertyGet(key)).get();
}

static Failure callNow(const Session& session, const std::function<bool()>& call, Waits waits,
                       const Failure& refusal) {
    const ServiceNow before;
    const pid_t pid = before.absence == nullptr ? serviceProcess(kPatience).pid : 0;
    session.log->forget();
    // A call that does not wait is made even if the service is absent: the library logs the
    // failure for -v, and the service may have started meanwhile.
    const bool done = (before.absence == nullptr || waits == Waits::kNever) && call();
    const bool failed = std::any_of(std::begin(kFailures), std::end(kFailures),
                                    [&](const char* text) { return session.log->has(text); });
    const bool absent = ServiceNow().absence != nullptr;
    if (done && !failed && !absent) return {kDone, ""};
    if (failed || absent || before.absence != nullptr) {
        return whyFailed(session.transport, before, pid, session.log->has(kAnswerTooLarge));
    }
    return refusal;
}

ExitCode callService(const Session& session, const std::function<bool()>& call, Waits waits,
                     const Failure& refusal) {
    std::promise<void> answered;
    std::thread watch([&session, end = answered.get_future()] {
        if (end.wait_for(std::chrono::seconds(5)) == std::future_status::ready) return;
        session.console.fail(
                session.command +
                ": the service has not answered for 5 s; 'dovctl doctor' says why, Ctrl-C ends");
    });
    const Failure failure = callNow(session, call, waits, refusal);
    answered.set_value();
    watch.join();
    return failure.code == kDone ? kDone : session.fail(failure.code, failure.why);
}

ExitCode readProperty(const Session& session, const std::string& key, std::string& value) {
    const auto read = [&] {
        value = propertyOf(key);
        return true;
    };
    return callService(session, read, Waits::kForService);
}

}  // namespace dovctl
