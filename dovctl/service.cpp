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
    const char* before = whyAbsent();
    // A call that does not wait is made all the same: the library's log shows what it makes of it,
    // and the service may have come by then.
    const bool done = (before == nullptr || waits == Waits::kNever) && call();
    const char* after = whyAbsent();
    if (done && after == nullptr) return kDone;
    // The library reports a refusal and a lost service alike.
    if (before != nullptr || after != nullptr) {
        console.fail(
                prefix + service +
                (before != nullptr ? before : std::string("went away meanwhile: it ") + after));
        return kNoService;
    }
    console.fail(prefix + "the service refused");
    return kRefused;
}

}  // namespace dovctl
