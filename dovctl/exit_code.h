// What the program's exit code says.
#pragma once

namespace dovctl {

enum ExitCode : int {
    kDone = 0,
    kRefused = 1,
    kWrongUsage = 2,
    kNoService = 3,
};

struct ExitCodeMeaning {
    ExitCode code;
    const char* meaning;
};

inline constexpr ExitCodeMeaning kExitCodes[] = {
        {kDone, "done"},
        {kRefused, "refused: the service is there but answered with a failure"},
        {kWrongUsage, "wrong usage: nothing was sent"},
        {kNoService, "the service is not declared, not running, or went away meanwhile"},
};

}  // namespace dovctl
