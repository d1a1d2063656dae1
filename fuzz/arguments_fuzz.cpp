// Fuzzes dovctl's command line, without a service.
//
// Input: the words of the command line, one per line.
#include <cstdlib>
#include <sstream>

#include "dovctl/dovctl.h"
#include "fuzz/fake_service.h"
#include "tests/support/test_waiter.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::answerNothing();
    std::istringstream lines(std::string(data, data + size));
    std::vector<std::string> words;
    // A word ends at a zero character, as on a real command line.
    for (std::string line; std::getline(lines, line);) words.push_back(line.c_str());
    std::ostringstream out, err;
    TestWaiter waiter;
    dovctl::Dovctl dovctl({out}, {err}, waiter);
    const int code = dovctl.run(words);
    // Every failure must give a reason, and every success must print something: without a service,
    // only commands that print can succeed.
    const bool said = !(code == dovctl::kDone ? out : err).str().empty() ||
                      out.str().find("failed") != std::string::npos;  // doctor's answer
    if (code < dovctl::kDone || code > dovctl::kNoOutput) std::abort();
    if (!said) std::abort();
    return 0;
}
