// The link between a binding's proxy and its death recipient.
#pragma once

#include <memory>

#include <android/binder_ibinder.h>

#include "common/service.h"

namespace dovcommon {

// Links `hal` to death with a new recipient, which it stores in `recipient`. `onDied` gets the
// address of `hal` as its cookie. The caller holds its binding's lock exclusively.
//
// Returns what AIBinder_linkToDeath returned; STATUS_OK on success. Does not call the service.
binder_status_t linkToDeath(AIBinder_DeathRecipient*& recipient, IMirx& hal,
                            AIBinder_DeathRecipient_onBinderDied onDied);

// Empties `hal`, unlinks it from `recipient` and frees the recipient. A death notice that is being
// delivered still runs to its end. The caller holds its binding's lock exclusively.
//
// Returns the proxy, for the caller to release without that lock: a proxy that is released may end
// its connection and with it the last reference to a callback of the caller's.
[[nodiscard]] std::shared_ptr<IMirx> drop(AIBinder_DeathRecipient*& recipient,
                                          std::shared_ptr<IMirx>& hal);

}  // namespace dovcommon
