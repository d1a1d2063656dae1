// Counts what is allocated.
#pragma once

#include <cstddef>

// How often the calling thread has called operator new, in any library of the process.
size_t allocations();

// How many allocations `call` makes on this thread.
template <typename Call>
size_t allocationsOf(const Call& call) {
    const size_t before = allocations();
    call();
    return allocations() - before;
}
