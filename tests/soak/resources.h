// What a process has that must not grow.
#pragma once

#include <string>

namespace soak {

struct Resources {
    long descriptors = 0;
    long threads = 0;
    long deathRecipients = 0;
    long kilobytes = 0;  // in memory

    // What the process has now.
    static Resources now();
    std::string text() const;
};

}  // namespace soak
