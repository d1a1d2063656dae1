// What a process that lives for months must not collect.
#pragma once

#include <cstddef>
#include <iosfwd>

// What this process has at the time when one is made.
struct Holdings {
    Holdings();

    size_t descriptors;
    size_t threads;
    size_t heap;  // in use, bytes
    size_t resident;  // bytes, without what the heap could give back
    size_t deathRecipients;  // made by the library and not yet freed
};

// Whether `heap` is what is in use, to the byte: the program was started with what the tests are,
// so that threads keep nothing for their next allocation.
bool heapIsExact();

// For people.
std::ostream& operator<<(std::ostream& out, const Holdings& holdings);
