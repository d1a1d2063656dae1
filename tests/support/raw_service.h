// A service that answers with the bytes that a test writes.
#pragma once

#include <functional>

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>

// Answers the transaction `code` (FIRST_CALL_TRANSACTION or more): writes the reply to `out`, or
// returns an error.
using RawAnswer =
        std::function<binder_status_t(transaction_code_t code, const AParcel* in, AParcel* out)>;

// Makes an object with the interface's descriptor that calls `answer` for every transaction except
// one-way ones. Binder threads call `answer` in parallel.
ndk::SpAIBinder makeRawService(RawAnswer answer);
