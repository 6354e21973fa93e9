// The allocator behind both string types.
#pragma once

#include <cstdint>

namespace Tsx {

/// Gives out string blocks by size class. Any thread, from static construction to static destruction.
///
///   requested bytes    reported size
///   up to 32           32
///   33 to 64           64
///   65 to 128          128
///   above 128          the request
class CStringBlockAllocator {
public:
    /// A block of at least `size` bytes; `allocated` is the size to be kept and given back with it. Raises CMemoryException.
    void* Alloc(std::int32_t size, std::int32_t& allocated);
    void Free(void* block, std::int32_t allocated) noexcept;
};

extern CStringBlockAllocator StringAllocator;

} // namespace Tsx
