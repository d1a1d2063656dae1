// Whether the service is there, and what to say when a call of it failed.
#include "dovctl/service.h"

#include <string>

#include <android/binder_auto_utils.h>
#include <android/binder_manager.h>

#include "common/service.h"

namespace dovctl {

using dovcommon::kServiceName;

// Why the service cannot be called; null if it can. Never waits for it.
static const char* whyAbsent() {
    if (!AServiceManager_isDeclared(kServiceName)) return "is not declared";
    const ndk::SpAIBinder service(AServiceManager_checkService(kServiceName));
    return service.get() != nullptr ? nullptr : "is declared but not running";
}

ExitCode callService(Console& console, const char* what, const std::function<bool()>& call,
                     Waits waits) {
    const std::string prefix = std::string(what) + ": ";
    const std::string service = std::string("service ") + kServiceName + " ";
    const char* why = whyAbsent();
    // A call that does not wait is made all the same: the library's log shows what it makes of it.
    const bool done = (why == nullptr || waits == Waits::kNever) && call();
    if (why != nullptr) {
        console.fail(prefix + service + why);
        return kNoService;
    }
    if (done) return kDone;
    // The library reports a refusal and a lost service alike.
    if ((why = whyAbsent()) != nullptr) {
        console.fail(prefix + service + "went away meanwhile: it " + why);
        return kNoService;
    }
    console.fail(prefix + "the service refused");
    return kRefused;
}

}  // namespace dovctl
