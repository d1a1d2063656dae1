// Counts allocations.
#include "bench/allocations.h"

#include <cstdlib>
#include <new>

#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#include <sanitizer/allocator_interface.h>
#endif

static thread_local size_t gAllocations = 0;

size_t allocations() {
    return gAllocations;
}

// The sanitizers define operator new themselves. Their hook counts calls of malloc too.
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)

[[maybe_unused]] static const int gHookInstalled = __sanitizer_install_malloc_and_free_hooks(
        [](const volatile void*, size_t) { ++gAllocations; }, [](const volatile void*) {});

#else

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

#endif
