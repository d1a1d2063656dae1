// One fault: what goes wrong, and in which calls.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <android/binder_status.h>

namespace simulator {

// A call that may go wrong: one of the service, or one that the service makes to a callback.
struct Call {
    const char* operation = "";  // of IMirx; of a callback: the one that brought the callback
    std::optional<int32_t> kind = {};  // the request kind, if the operation has one
    int32_t pid = 0;  // the client; 0 if unknown
    bool isCallback = false;
};

// The effect of all faults on one call.
struct Misbehaviour {
    enum class Death { kNone, kBefore, kAfter };
    enum class Reply { kTrue, kEmpty, kMany, kAbsent, kText, kLong, kHuge };
    enum class Callback { kTrue, kNever, kTwice, kLate, kEarly };

    std::string faults;  // the texts of these faults, for the journal; empty for none
    std::chrono::milliseconds delay = {};
    bool never = false;  // answers only when the faults are cleared
    Death death = Death::kNone;  // before the call is worked on, or after it was answered
    binder_status_t status = STATUS_OK;
    binder_exception_t exception = EX_NONE;
    std::optional<int32_t> answer;  // in place of the work
    Reply reply = Reply::kTrue;
    Callback callback = Callback::kTrue;
};

struct FaultKind;

struct Fault {
    // The calls in which it happens: calls of the operations and kinds (all if none is named) from
    // the client (any if 0). It happens in every `every`th of them, at most `times` times.
    struct When {
        std::vector<std::string> operations;
        std::vector<int32_t> kinds;
        int64_t pid = 0;
        int64_t every = 1;
        int64_t times = INT64_MAX;
    };

    // Reads WHAT[=HOW][:WHEN[,WHEN...]]; see kFaultHelp. Returns the error, or an empty text.
    std::string read(const std::string& written);
    // Whether it can happen in `call`, however often it has happened.
    bool applies(const Call& call) const;
    // Adds its effect.
    void apply(Misbehaviour& misbehaviour) const;

    std::string text;  // as it was written
    const FaultKind* kind = nullptr;
    int64_t value = 0;
    When when;
    int64_t calls = 0;  // to which it applies
    int64_t happened = 0;
};

// Text of --help about faults.
extern const char kFaultHelp[];

}  // namespace simulator
