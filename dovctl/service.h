// Calls of the service through the library, and what to say when one failed.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include <android/binder_auto_utils.h>

#include "dovctl/command.h"
#include "dovctl/exit_code.h"

namespace dovctl {

// How long to wait for an answer of the service manager.
inline constexpr std::chrono::milliseconds kPatience{2000};

// Whether a call of the library waits for a service that is declared but not running.
enum class Waits { kNever, kForService };

// Why a call came to nothing.
struct Failure {
    ExitCode code;
    std::string why;
};

inline const Failure kRefusal{kRefused, "the service refused"};

// Makes `call`, unless it would have to wait for the service. `call` returns whether the service
// did what it was asked; `refusal` is the failure when it answered but did not. Tells the user when
// the service has not answered for a while.
//
// Returns kDone, or the code of a failure that has been reported.
ExitCode callService(const Session& session, const std::function<bool()>& call,
                     Waits waits = Waits::kNever, const Failure& refusal = kRefusal);

// The library aborts at a longer value of a property.
inline constexpr size_t kLongestProperty = 255;

// The value of a property, of any length; "" if the service has none. Call it within callService.
std::string propertyOf(const std::string& key);

// The same as a call of its own, into `value`.
ExitCode readProperty(const Session& session, const std::string& key, std::string& value);

// The service at this moment. Does not wait for it.
struct ServiceNow {
    ServiceNow();

    const char* absence = nullptr;  // why it cannot be called; null if it can
    ndk::SpAIBinder binder;
};

// Why a call got no answer, or a status that is not OK. `before` is the service before the call and
// `pid` its process, 0 if unknown; `answerTooLarge`: the answer is known to have been too large.
Failure whyFailed(const dovcommon::Transport& transport, const ServiceNow& before, pid_t pid,
                  bool answerTooLarge);

}  // namespace dovctl
