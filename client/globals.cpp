// The globals of the low-level client, in the order of their construction. Exit destroys them in
// reverse order, unless a thread still uses them.
#include "client/binding.h"
#include "client/registry.h"

namespace mirxHalclient::internal {

constinit ExitGate g_mirx_gate;

[[clang::no_destroy]] std::shared_ptr<IMirx> g_mirx_hal;
[[clang::no_destroy]] std::shared_timed_mutex g_mirx_hal_mutex;

[[clang::no_destroy]] std::mutex listening_callback_mutex;
[[clang::no_destroy]] std::vector<MirxCallbackGroup> listening_callback_groups;

}  // namespace mirxHalclient::internal

[[clang::no_destroy]] std::mutex request_callback_mutex;
[[clang::no_destroy]] std::vector<std::shared_ptr<MirxCallbackClient>> request_callbacks;

namespace {

using namespace mirxHalclient::internal;

const struct Teardown {
    ~Teardown() {
        g_mirx_gate.closeAndDestroy(request_callbacks, request_callback_mutex,
                                    listening_callback_groups, listening_callback_mutex,
                                    g_mirx_hal_mutex, g_mirx_hal);
    }
} gTeardown;

// At load, when no binder thread reads the hook yet.
[[maybe_unused]] const bool gLogHookInstalled = (installLogHook(), true);

}  // namespace
