// Parameters of several commands.
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

// A required number.
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

// A time to wait, from 1 ms on.
constexpr Parameter timeOption(const char* name, const char* fallback, const char* help) {
    return {.name = name,
            .placeholder = "MILLISECONDS",
            .read = readMilliseconds,
            .fallback = fallback,
            .help = help};
}

inline constexpr Parameter kDuration = numberOption(
        "duration", "0",
        "how long to hold, in the service's unit (the simulator's: milliseconds); 0 or less: until "
        "released");
inline constexpr Parameter kHold{.name = "hold", .help = "keep running; release on Ctrl-C"};
inline constexpr Parameter kReconnect{.name = "reconnect",
                                      .help = "when the service dies, wait for it and start again"};

}  // namespace dovctl
