// Marks memory that a pool holds back, so that AddressSanitizer sees its misuse as it would see that of freed memory.
// Empty in other builds.
#pragma once

#include <cstddef>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TSX_POISON 1
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define TSX_POISON 1
#endif

#ifdef TSX_POISON
#include <sanitizer/asan_interface.h>
#endif

namespace Tsx {

inline void PoisonMemory([[maybe_unused]] const void* memory, [[maybe_unused]] std::size_t size) {
#ifdef TSX_POISON
    __asan_poison_memory_region(memory, size);
#endif
}

inline void UnpoisonMemory([[maybe_unused]] const void* memory, [[maybe_unused]] std::size_t size) {
#ifdef TSX_POISON
    __asan_unpoison_memory_region(memory, size);
#endif
}

} // namespace Tsx
