#include "foundation/inc/privateallocators.h"

#include "foundation/inc/errors.h"
#include "platform/inc/memory.h"

namespace Tsx {

void* CStringBlockAllocator::Alloc(std::int32_t size, std::int32_t& allocated) {
    const std::int32_t reported = size > 128 ? size : size > 64 ? 128 : size > 32 ? 64 : 32;
    void* block = Platform::AllocateRuntimeHeap(static_cast<std::size_t>(reported));
    if (!block) {
        GenerateMemoryException();
    }
    allocated = reported;
    return block;
}

void CStringBlockAllocator::Free(void* block, std::int32_t allocated) noexcept {
    static_cast<void>(allocated);
    Platform::FreeRuntimeHeap(block);
}

void* CMemoryExceptionPool::TakeSlot() {
    static_assert(sizeof(CMemoryException) == ObjectSize && offsetof(CSlot, object) == 8);
    const CCriticalSectionLock guard(lock);
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
    const CCriticalSectionLock guard(lock);
    for (CSlot& slot : slots) {
        if (static_cast<const void*>(slot.object) == exception) {
            TSX_ASSERT(slot.InUse, u"src\\privateallocators");
            slot.InUse = false;
            return;
        }
    }
    FailAssertion(u"src\\privateallocators", __LINE__);
}

void ReleaseMemoryException(const CMemoryException* exception) {
    MemoryExceptionPool.ReleaseSlot(exception);
}

} // namespace Tsx
