// One binding's link to the death of its service.
#pragma once

#include <memory>

#include <android/binder_ibinder.h>

#include "common/service.h"

namespace dovcommon {

// Starts empty, has no destructor: what it holds lives until the process ends, so that a notice
// which arrives during exit still finds its recipient.
struct DeathLink {
    AIBinder_DeathRecipient* recipient = nullptr;
    AIBinder_Weak* binder = nullptr;
    void* cookie = nullptr;
};

// Links `hal` to death with a new recipient that calls `onDied`, and frees the recipient of the
// earlier link, which then never fires again. The cookie that `onDied` gets is `hal`'s address. The
// caller guards `link` with its binding's lock.
//
// Returns what AIBinder_linkToDeath returned; STATUS_OK on success. Does not call the service.
binder_status_t linkToDeath(DeathLink& link, IMirx& hal,
                            AIBinder_DeathRecipient_onBinderDied onDied);

// Empties `hal`, a proxy that is linked to death, and has the driver know it before another thread
// binds. The caller has locked its binding exclusively. Does not call the service.
void dropLinked(std::shared_ptr<IMirx>& hal);

}  // namespace dovcommon
