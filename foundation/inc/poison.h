// Marks of memory that must not be touched, for builds that watch every access. Storage that recycles its blocks would
// otherwise hide each use of one that was given back. In all other builds both functions are empty.
#pragma once

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define TSX_WATCHED_MEMORY
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TSX_WATCHED_MEMORY
#endif
#endif

#ifdef TSX_WATCHED_MEMORY
#include <sanitizer/asan_interface.h>
#endif

namespace Tsx {

/// The range must lie in one block that its owner still holds, and must be freed again before the block is released.
inline void PoisonMemory([[maybe_unused]] void* start, [[maybe_unused]] std::size_t size) {
#ifdef TSX_WATCHED_MEMORY
    ASAN_POISON_MEMORY_REGION(start, size);
#endif
}

inline void UnpoisonMemory([[maybe_unused]] void* start, [[maybe_unused]] std::size_t size) {
#ifdef TSX_WATCHED_MEMORY
    ASAN_UNPOISON_MEMORY_REGION(start, size);
#endif
}

} // namespace Tsx
