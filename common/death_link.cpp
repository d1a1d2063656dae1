// The link between a binding's proxy and its death recipient.
#include "common/death_link.h"

#include <utility>

namespace dovcommon {

binder_status_t linkToDeath(AIBinder_DeathRecipient*& recipient, IMirx& hal,
                            AIBinder_DeathRecipient_onBinderDied onDied) {
    recipient = AIBinder_DeathRecipient_new(onDied);
    return AIBinder_linkToDeath(hal.asBinder().get(), recipient, &hal);
}

std::shared_ptr<IMirx> drop(AIBinder_DeathRecipient*& recipient, std::shared_ptr<IMirx>& hal) {
    if (!hal) return nullptr;
    // Unlinking the last recipient tells the driver at once, and before another thread can link the
    // same proxy. Left to the release of the proxy, the driver would be told with this thread's
    // next call, and would then undo a link that another thread has made in the meantime.
    // A dead proxy is not linked any more.
    const ndk::SpAIBinder binder = hal->asBinder();
    if (AIBinder_isAlive(binder.get())) {
        AIBinder_unlinkToDeath(binder.get(), recipient, hal.get());
    }
    AIBinder_DeathRecipient_delete(std::exchange(recipient, nullptr));
    return std::exchange(hal, nullptr);
}

}  // namespace dovcommon
