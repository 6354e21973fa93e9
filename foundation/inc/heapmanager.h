// A private heap that counts its blocks and reports leaks: that of long strings.
#pragma once

#include "foundation/inc/memorymanager.h"
#include "platform/inc/memory.h"

namespace Tsx {

/// No lock of its own: the owner guards it. Without a heap it does nothing.
class CHeapManager : public IMemoryManager {
public:
    CHeapManager() = default;
    /// Reports leaks and destroys the heap, if there is one.
    ~CHeapManager() override;
    CHeapManager(const CHeapManager&) = delete;
    CHeapManager& operator=(const CHeapManager&) = delete;

    /// Makes the heap. Raises CMemoryException. `destroyIfNotEmpty` lets DestroyHeap take blocks along that are still
    /// out.
    void CreateHeap(std::size_t initialSize, bool destroyIfNotEmpty);

    void* Alloc(std::int32_t size) override;
    void Free(void* block) override;

    /// Alloc and Free in two steps, for owners whose lock is not to be held over a call of the system: the block alone,
    /// which needs no lock, and its count. FreeUncounted tells the bytes that go, 0 where the heap does not know.
    void* AllocUncounted(std::int32_t size) const;
    std::int32_t FreeUncounted(void* block) const noexcept;
    void Count(std::int32_t blocks, std::int32_t bytes) {
        BlockCount += blocks;
        // More than 2 GiB may be out: the sum then wraps, and comes back as they are given back.
        TotalBytes =
            static_cast<std::int32_t>(static_cast<std::uint32_t>(TotalBytes) + static_cast<std::uint32_t>(bytes));
    }

    /// Turns on the low-fragmentation mode where the system has it: the NT family from 5.1 on.
    void SetLowFragmentation();
    /// Tells of blocks that are still out, as the debug flags ask: each block to the debugger, the heap in a message
    /// box.
    void ReportLeaks();
    /// Gives the heap back, unless blocks are out and it is not allowed to take them along. Nothing without a heap.
    void DestroyHeap();

    std::int32_t GetBlockCount() const { return BlockCount; }
    std::int32_t GetTotalBytes() const { return TotalBytes; }
    bool HasHeap() const { return Heap != nullptr; }

private:
    Platform::Heap Heap = nullptr;
    bool DestroyIfNotEmpty = false;
    std::int32_t BlockCount = 0; // blocks out
    std::int32_t TotalBytes = 0; // bytes asked for and not yet given back

    void WalkLeaks() const;
};

} // namespace Tsx
