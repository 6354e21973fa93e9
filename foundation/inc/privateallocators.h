// The allocators that the foundation keeps for itself: string blocks, and the exceptions that must exist when memory
// does not.
#pragma once

#include "foundation/inc/criticalsection.h"
#include <cstddef>
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
    /// A block of at least `size` bytes; `allocated` is the size to be kept and given back with it. Raises
    /// CMemoryException.
    void* Alloc(std::int32_t size, std::int32_t& allocated);
    void Free(void* block, std::int32_t allocated) noexcept;
};

extern CStringBlockAllocator StringAllocator;

class CMemoryException;

/// Room for the memory exceptions that can exist at one time. Any thread; takes nothing from any heap.
class CMemoryExceptionPool {
public:
    static constexpr std::int32_t SlotCount = 64;

    /// A free slot's room, now in use; null when all are.
    void* TakeSlot();
    /// Frees the slot of an exception. One that is not in the pool, or whose slot is free, is an assertion; null is
    /// ignored.
    void ReleaseSlot(const CMemoryException* exception);

private:
    static constexpr std::size_t ObjectSize =
        sizeof(void*); // of CMemoryException, which is checked where the pool is used

    // The object follows its flag without a gap; what aligns it stands in front of the flag.
    struct CSlot {
        std::byte alignment[7];
        bool InUse;
        std::byte object[ObjectSize];
    };

    CCriticalSection lock;
    alignas(sizeof(void*)) CSlot slots[SlotCount] = {};
};

extern CMemoryExceptionPool MemoryExceptionPool;

/// Gives the slot of a memory exception back; called by its destructor.
void ReleaseMemoryException(const CMemoryException* exception);

} // namespace Tsx
