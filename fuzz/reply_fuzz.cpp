// Fuzzes the replies to every call that waits for one.
//
// Input: one byte that selects the call, then the reply.
#include <algorithm>
#include <cstdlib>
#include <iostream>

#include <dov/dov.h>
#include <dov/halclient.h>

#include "fuzz/fake_service.h"
#include "tests/support/operations.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // DovGetPMStatus writes to std::cout.
    [[maybe_unused]] static const bool quiet = (std::cout.setstate(std::ios::failbit), true);
    if (size == 0) return 0;
    const Operation& operation = operations()[data[0] % operations().size()];
    // Stays below 256 characters: a longer property aborts the process by contract.
    const size_t most = operation.reply == Reply::kText ? 160 : size;
    fuzz::answerWith({data + 1, std::min(size - 1, most)});
    operation.call(7);
    endRegistration();

    // Both bindings must understand the next reply, whatever this one was.
    static constexpr uint8_t kNine[] = {0, 0, 0, 0, 9, 0, 0, 0};
    fuzz::answerWith(kNine);
    if (mirxHalclient::mirxResCtlRelease(1) != 9 || setRelatedSysInfo(1, 2) != 9) std::abort();
    mirxHalclient::mirxResListeningUnRegister(-1);  // the fuzzed handle may be -1
    request_callbacks.clear();
    return 0;
}
