#include "foundation/inc/blockmanager.h"

#include "foundation/inc/assertion.h"
#include "foundation/inc/failureguard.h"
#include "platform/inc/memory.h"
#include <algorithm>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\alloc";
constexpr std::int32_t StepUnit = 16;
constexpr std::int32_t SmallestStep = 8;
constexpr std::int32_t PageSize = 0x10000;
constexpr std::int32_t PagePayload = 65520; // a page less its header

} // namespace

std::int32_t GetAllocationGranularity() {
    static const auto granularity = static_cast<std::int32_t>(Platform::GetSystemInfo().allocationGranularity);
    TSX_ASSERT(granularity != 0, ModuleName);
    return granularity;
}

CBlockManager::CBlockManager(std::int32_t blockSize)
    : BlockSize(blockSize), BlockStep((std::max(blockSize, SmallestStep) + StepUnit - 1) / StepUnit * StepUnit),
      PageCapacity(std::max(BlockStep, PagePayload) / BlockStep * BlockStep),
      PageAllocSize(std::max(PageCapacity + static_cast<std::int32_t>(sizeof(CPage)), PageSize)) {
    PageManager = PageAllocSize < GetAllocationGranularity() ? static_cast<IMemoryManager*>(&RuntimeHeapManager)
                                                             : &VirtualMemoryManager;
}

CBlockManager::~CBlockManager() {
    FreePages(UsedPages);
    FreePages(SparePages);
}

void* CBlockManager::Alloc(std::int32_t size) {
    TSX_REQUIRE(size <= BlockSize, ModuleName, nullptr); // for which AllocateFromCurrentManager raises
    return AllocBlock();
}

void CBlockManager::Free(void* block) {
    FreeBlock(block);
}

CBlockManager::CPage* CBlockManager::NewPage() const {
    auto* page = static_cast<CPage*>(PageManager->Alloc(PageAllocSize));
    page->reserved = 0;
    PoisonMemory(page + 1, static_cast<std::size_t>(PageCapacity));
    return page;
}

void* CBlockManager::TakeFromSparePage() {
    CPage* page = SparePages;
    if (!page) {
        return nullptr;
    }
    SparePages = page->next;
    page->next = UsedPages;
    UsedPages = page;
    PageUsed = BlockStep;
    UnpoisonMemory(FirstBlock(page), static_cast<std::size_t>(BlockSize));
    return FirstBlock(page);
}

void CBlockManager::Reset() {
    FreeList = nullptr;
    FreeBytes = 0;
    PageUsed = 0;
    InUseBytes = 0;
    while (UsedPages) {
        CPage* page = UsedPages;
        UsedPages = page->next;
        page->next = SparePages;
        SparePages = page;
    }
}

void CBlockManager::FreePages(CPage* pages) {
    while (pages) {
        CPage* page = pages;
        pages = page->next;
        UnpoisonMemory(page, static_cast<std::size_t>(PageAllocSize));
        GuardDestructor([&] { PageManager->Free(page); });
    }
}

} // namespace Tsx
