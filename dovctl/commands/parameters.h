// Parameters that several commands take.
#pragma once

#include "dovctl/arguments.h"

namespace dovctl {

constexpr Parameter resourceOption(Count count) {
    return {.name = "resource",
            .placeholder = "OPCODE[=VALUE]",
            .read = readResource,
            .count = count,
            .help = "a resource to set; 'OPCODE=' sends an empty value"};
}

// A number that must be given.
constexpr Parameter number(const char* name, const char* help) {
    return {.name = name, .read = readInt32, .count = Count::kOne, .help = help};
}

// A number with a default.
constexpr Parameter numberOption(const char* name, const char* fallback, const char* help) {
    return {.name = name,
            .placeholder = "N",
            .read = readInt32,
            .fallback = fallback,
            .help = help};
}

// A time to wait, which is never none.
constexpr Parameter timeOption(const char* name, const char* fallback, const char* help) {
    return {.name = name,
            .placeholder = "MILLISECONDS",
            .read = readMilliseconds,
            .fallback = fallback,
            .help = help};
}

inline constexpr Parameter kDuration =
        numberOption("duration", "0", "how long, in the service's unit; 0 or less: until released");
inline constexpr Parameter kHold{.name = "hold", .help = "keep running, and release on Ctrl-C"};

}  // namespace dovctl
