// The allocators that the foundation keeps for itself: string blocks, and the memory exceptions, which are raised when
// no memory is left to make them in.
#pragma once

#include "foundation/inc/blockmanager.h"
#include "foundation/inc/heapmanager.h"
#include "foundation/inc/leaflock.h"
#include <cstddef>
#include <cstdint>

namespace Tsx {

/// Gives out string blocks by size class. Any thread, from static construction to static destruction; independent of
/// any thread's current manager. Strings that outlive it are abandoned.
///
///   requested bytes    class     reported size
///   up to 32           Small     32
///   33 to 64           Medium    64
///   65 to 128          Large     128
///   above 128          Huge      the request
class CStringBlockAllocator {
public:
    CStringBlockAllocator();
    ~CStringBlockAllocator();
    CStringBlockAllocator(const CStringBlockAllocator&) = delete;
    CStringBlockAllocator& operator=(const CStringBlockAllocator&) = delete;

    /// A block of at least `size` bytes; `allocated` is the size to be kept and given back with it: it alone names the
    /// class. Raises CMemoryException.
    void* Alloc(std::int32_t size, std::int32_t& allocated) {
        if (size > LargeSize) {
            allocated = size;
            return AllocHuge(size);
        }
        CBlockManager& pool = PoolOf(size);
        allocated = pool.GetBlockSize();
        void* block = nullptr;
        {
            const CLeafLockGuard guard(Lock);
            block = pool.TryAllocBlock();
        }
        return block ? block : AllocFromNewPage(pool);
    }

    void Free(void* block, std::int32_t allocated) noexcept {
        if (allocated > LargeSize) {
            FreeHuge(block);
            return;
        }
        CBlockManager& pool = PoolOf(allocated);
        const CLeafLockGuard guard(Lock);
        pool.FreeBlock(block);
    }

protected:
    static constexpr std::int32_t SmallSize = 32;
    static constexpr std::int32_t MediumSize = 64;
    static constexpr std::int32_t LargeSize = 128;

    CLeafLock Lock;
    CBlockManager Small{SmallSize};
    CBlockManager Medium{MediumSize};
    CBlockManager Large{LargeSize};
    CHeapManager Huge;

private:
    CBlockManager& PoolOf(std::int32_t size) { return size <= SmallSize ? Small : size <= MediumSize ? Medium : Large; }
    // The system is called before Lock is entered or after it is left: nothing that can fail happens inside.
    void* AllocFromNewPage(CBlockManager& pool);
    void* AllocHuge(std::int32_t size);
    void FreeHuge(void* block) noexcept;
};

extern CStringBlockAllocator StringAllocator;

class CMemoryException;

/// Room for the memory exceptions that can exist at one time. Any thread; takes nothing from any heap and no
/// constructor: memory may end before the first static object stands.
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

    CLeafLock lock;
    alignas(sizeof(void*)) CSlot slots[SlotCount] = {};
};

extern constinit CMemoryExceptionPool MemoryExceptionPool;

/// Gives the slot of a memory exception back; called when that is destroyed.
void ReleaseMemoryException(const CMemoryException* exception);

} // namespace Tsx
