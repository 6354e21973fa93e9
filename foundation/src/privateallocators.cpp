#include "foundation/inc/privateallocators.h"

#include "foundation/inc/errors.h"

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\privateallocators";
constexpr std::size_t HugeInitialSize = 0x20000;

/// The foundation's debug report, which goes nowhere in this build.
void DebugReport(const char16_t* format, std::int32_t value) {
    static_cast<void>(format);
    static_cast<void>(value);
}

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
            TSX_ASSERT(slot.InUse, ModuleName);
            slot.InUse = false;
            return;
        }
    }
    FailAssertion(ModuleName, __LINE__);
}

void ReleaseMemoryException(const CMemoryException* exception) {
    MemoryExceptionPool.ReleaseSlot(exception);
}

} // namespace Tsx
