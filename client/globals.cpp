// Every global of the low-level client, in the order in which they are made; they are destroyed in
// reverse when the process ends.
#include "client/binding.h"
#include "client/registry.h"

namespace mirxHalclient::internal {

std::shared_ptr<IMirx> g_mirx_hal;
std::shared_timed_mutex g_mirx_hal_mutex;

std::mutex listening_callback_mutex;
std::vector<MirxCallbackGroup> listening_callback_groups;

}  // namespace mirxHalclient::internal

std::mutex request_callback_mutex;
std::vector<std::shared_ptr<MirxCallbackClient>> request_callbacks;

// Already here, while no binder thread can read the hook.
[[maybe_unused]] static const bool gLogHookInstalled =
        (mirxHalclient::internal::installLogHook(), true);
