// The program's exit codes.
#pragma once

namespace dovctl {

enum ExitCode : int {
    kDone = 0,
    kRefused = 1,
    kWrongUsage = 2,
    kNoService = 3,
    kNothing = 4,
    kBadAnswer = 5,
    kTooLarge = 6,
    kNoOutput = 7,
};

struct ExitCodeMeaning {
    ExitCode code;
    const char* meaning;
};

inline constexpr ExitCodeMeaning kExitCodes[] = {
        {kDone, "done"},
        {kRefused, "refused: the service is running but answered with a refusal or an error"},
        {kWrongUsage, "wrong usage: nothing was sent"},
        {kNoService, "no service: it is not declared, is not running, or died meanwhile"},
        {kNothing, "nothing: the service has no answer, or holds nothing for the handle"},
        {kBadAnswer, "bad answer: the service's answer is not what the contract says"},
        {kTooLarge, "too large: the transport cannot carry the request or its answer"},
        {kNoOutput, "no output: the result could not be written"},
};

}  // namespace dovctl
