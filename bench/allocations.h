// Counts allocations.
#pragma once

#include <cstddef>

// The number of times that the calling thread has called operator new, in any library.
size_t allocations();

// The number of allocations that `call` makes on this thread.
template <typename Call>
size_t allocationsOf(const Call& call) {
    const size_t before = allocations();
    call();
    return allocations() - before;
}
