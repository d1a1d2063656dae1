// One binding's link to the death of its service.
#include "common/death_link.h"

#include <mutex>
#include <utility>

#include <binder/IPCThreadState.h>

namespace dovcommon {
namespace {

// Both bindings have the same proxy, and its memory of whom to tell of the service's death. What
// the driver is told when they drop it and when they link it must come to the driver in that order,
// from whichever threads. Taken last and held for no call.
[[clang::no_destroy]] constinit std::mutex gLinks;

void release(const DeathLink& link) {
    if (link.recipient == nullptr) return;
    // A proxy that lives on (the process's other binding may hold it) would keep an entry for every
    // recipient that it was ever linked with. A dead one has dropped them already.
    ndk::SpAIBinder binder(AIBinder_Weak_promote(link.binder));
    if (binder.get() != nullptr && AIBinder_isAlive(binder.get())) {
        AIBinder_unlinkToDeath(binder.get(), link.recipient, link.cookie);
    }
    AIBinder_Weak_delete(link.binder);
    AIBinder_DeathRecipient_delete(link.recipient);
}

}  // namespace

binder_status_t linkToDeath(DeathLink& link, IMirx& hal,
                            AIBinder_DeathRecipient_onBinderDied onDied) {
    const ndk::SpAIBinder binder = hal.asBinder();
    std::lock_guard lock(gLinks);
    const DeathLink earlier = std::exchange(link, DeathLink{AIBinder_DeathRecipient_new(onDied),
                                                            AIBinder_Weak_new(binder.get()), &hal});
    const binder_status_t status = AIBinder_linkToDeath(binder.get(), link.recipient, link.cookie);
    release(earlier);
    return status;
}

void dropLinked(std::shared_ptr<IMirx>& hal) {
    std::lock_guard lock(gLinks);
    hal.reset();
    // What libbinder has to say of a proxy that goes - nobody waits for its death any more - stays
    // with this thread until its next call. The driver would take it for the link that another
    // thread has made meanwhile: its death would not be heard of, its memory never freed.
    if (auto* thread = android::IPCThreadState::selfOrNull()) thread->flushCommands();
}

}  // namespace dovcommon
