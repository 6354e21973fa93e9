#include "foundation/inc/memorymanager.h"

#include "foundation/inc/assertion.h"
#include "foundation/inc/failureguard.h"
#include "foundation/src/statics.h"
#include "platform/inc/memory.h"
#include <limits>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\alloc";

// In front of each block of the current manager's policy; 16 bytes keep the block's alignment, of which the second half
// is not written.
struct alignas(16) BlockHeader {
    IMemoryManager* manager;
};

} // namespace

void* CRuntimeHeapManager::Alloc(std::int32_t size) {
    return AllocateFromRuntimeHeap(size);
}

void CRuntimeHeapManager::Free(void* block) {
    FreeToRuntimeHeap(block);
}

void* CVirtualMemoryManager::Alloc(std::int32_t size) {
    void* pages =
        Platform::VirtualAlloc(nullptr, static_cast<std::size_t>(size), Platform::MemCommit, Platform::PageReadWrite);
    if (!pages) {
        GenerateMemoryException();
    }
    return pages;
}

void CVirtualMemoryManager::Free(void* block) {
    if (block) {
        TSX_ASSERT(Platform::VirtualFree(block, 0, Platform::MemRelease), ModuleName);
    }
}

IMemoryManager* CurrentMemoryManager() {
    auto* manager = static_cast<IMemoryManager*>(MemoryManagerSlot.Get());
    return manager ? manager : &RuntimeHeapManager;
}

CMemoryManagerScope::CMemoryManagerScope(IMemoryManager* manager) : kept(CurrentMemoryManager()) {
    MemoryManagerSlot.Set(manager);
}

CMemoryManagerScope::~CMemoryManagerScope() {
    MemoryManagerSlot.Set(kept);
}

void* AllocateFromCurrentManager(std::int64_t size) {
    const std::int64_t whole = size + static_cast<std::int64_t>(sizeof(BlockHeader));
    if (whole > std::numeric_limits<std::int32_t>::max()) {
        GenerateMemoryException();
    }
    IMemoryManager* manager = CurrentMemoryManager();
    auto* header = static_cast<BlockHeader*>(manager->Alloc(static_cast<std::int32_t>(whole)));
    if (!header) {
        GenerateMemoryException();
    }
    header->manager = manager;
    return header + 1;
}

void FreeToOwnManager(void* block) noexcept {
    if (block) {
        BlockHeader* header = static_cast<BlockHeader*>(block) - 1;
        GuardDestructor([header] { header->manager->Free(header); });
    }
}

void* AllocateFromRuntimeHeap(std::int64_t size) {
    void* block = Platform::AllocateRuntimeHeap(static_cast<std::size_t>(size));
    if (!block) {
        GenerateMemoryException();
    }
    return block;
}

void FreeToRuntimeHeap(void* block) noexcept {
    Platform::FreeRuntimeHeap(block);
}

void* AllocateFromProcessHeap(std::int64_t size) {
    void* block = Platform::HeapAlloc(Platform::GetProcessHeap(), 0, static_cast<std::size_t>(size));
    if (!block) {
        GenerateMemoryException();
    }
    return block;
}

void FreeToProcessHeap(void* block) noexcept {
    if (block && !Platform::HeapFree(Platform::GetProcessHeap(), 0, block)) {
        GuardDestructor([] { FailAssertion(ModuleName, __LINE__); });
    }
}

void* CAllocatedOn<RuntimeHeap>::operator new(std::size_t size) noexcept {
    return Platform::AllocateRuntimeHeap(size);
}

void CAllocatedOn<RuntimeHeap>::operator delete(void* block) noexcept {
    Platform::FreeRuntimeHeap(block);
}

} // namespace Tsx
