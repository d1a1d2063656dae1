// Arbitrary words on dovctl's command line, with no service there to send anything to.
//
// Input: the words, one a line.
#include <cstdlib>
#include <sstream>

#include "dovctl/dovctl.h"
#include "fuzz/fake_service.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::answerNothing();
    std::istringstream lines(std::string(data, data + size));
    std::vector<std::string> words;
    for (std::string line; std::getline(lines, line);) {
        // A command line cannot carry zero characters.
        words.push_back(line.c_str());
    }
    std::ostringstream out, err;
    dovctl::Dovctl dovctl(out, err, [] {});
    const int code = dovctl.run(words);
    // Every failure says why, and success prints what was asked for: there is no service.
    const bool said = !(code == dovctl::kDone ? out : err).str().empty();
    const bool diagnosed = out.str().find("failed") != std::string::npos;  // doctor's answer
    if (code < dovctl::kDone || code > dovctl::kNoService) std::abort();
    if (!said && !diagnosed) std::abort();
    return 0;
}
