// A service that answers with whatever bytes a test writes.
#pragma once

#include <functional>

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>

// Answers the transaction `code` (from FIRST_CALL_TRANSACTION up): writes to `out`, or returns an
// error.
using RawAnswer =
        std::function<binder_status_t(transaction_code_t code, const AParcel* in, AParcel* out)>;

// An object under the interface's name that hands every transaction to `answer`, but for those that
// nobody waits for. Binder threads call it in parallel.
ndk::SpAIBinder makeRawService(RawAnswer answer);
