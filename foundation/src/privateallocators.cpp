#include "foundation/inc/privateallocators.h"

#include "foundation/inc/errors.h"
#include <utility>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\privateallocators";
constexpr std::size_t HugeInitialSize = 0x20000;

/// The foundation's debug report, which goes nowhere in this build.
void DebugReport(const char16_t*, std::int32_t) {}

} // namespace

CStringBlockAllocator::CStringBlockAllocator() {
    Huge.CreateHeap(HugeInitialSize, true);
    Huge.SetLowFragmentation();
}

CStringBlockAllocator::~CStringBlockAllocator() {
    const CLeafLockGuard guard(Lock);
    DebugReport(u"Total size of string block allocators - %d bytes\n",
                Small.GetInUseBytes() + Medium.GetInUseBytes() + Large.GetInUseBytes() + Huge.GetTotalBytes());
    Small.Reset();
    Medium.Reset();
    Large.Reset();
}

void* CStringBlockAllocator::AllocFromNewPage(CBlockManager& pool) {
    auto* page = pool.NewPage();
    const CLeafLockGuard guard(Lock);
    return pool.AllocFromPage(page);
}

void* CStringBlockAllocator::AllocHuge(std::int32_t size) {
    void* block = Huge.AllocUncounted(size);
    const CLeafLockGuard guard(Lock);
    Huge.Count(1, size);
    return block;
}

void CStringBlockAllocator::FreeHuge(void* block) noexcept {
    if (block) {
        const std::int32_t size = Huge.FreeUncounted(block);
        const CLeafLockGuard guard(Lock);
        Huge.Count(-1, -size);
    }
}

void* CMemoryExceptionPool::TakeSlot() {
    static_assert(sizeof(CMemoryException) == ObjectSize && offsetof(CSlot, object) == 8);
    const CLeafLockGuard guard(lock);
    for (CSlot& slot : slots) {
        if (!slot.InUse) {
            slot.InUse = true;
            return slot.object;
        }
    }
    return nullptr;
}

void CMemoryExceptionPool::ReleaseSlot(const CMemoryException* exception) {
    if (!exception) {
        return;
    }
    bool wasInUse = false;
    {
        const CLeafLockGuard guard(lock);
        for (CSlot& slot : slots) {
            if (static_cast<const void*>(slot.object) == exception) {
                wasInUse = std::exchange(slot.InUse, false);
                break;
            }
        }
    }
    TSX_ASSERT(wasInUse, ModuleName); // outside the lock: the report may need a slot itself
}

void ReleaseMemoryException(const CMemoryException* exception) {
    MemoryExceptionPool.ReleaseSlot(exception);
}

} // namespace Tsx
