// The resources that a process must not leak.
#pragma once

#include <cstddef>
#include <iosfwd>

// The resources that this process has when the object is made.
struct Holdings {
    Holdings();

    size_t descriptors;
    size_t threads;
    size_t heap;  // in use, bytes
    size_t resident;  // bytes, after the heap has released what it can
    size_t deathRecipients;  // made by the library and not yet freed
};

// Whether `heap` is exact: true when per-thread allocator caches are off, as the test runner sets
// them.
bool heapIsExact();

std::ostream& operator<<(std::ostream& out, const Holdings& holdings);
