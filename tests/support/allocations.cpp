// Counts what is allocated.
#include "tests/support/allocations.h"

#include <cstdlib>
#include <new>

static thread_local size_t gAllocations = 0;

size_t allocations() {
    return gAllocations;
}

void* operator new(size_t size) {
    ++gAllocations;
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}
