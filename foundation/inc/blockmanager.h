// Blocks of one size, cut from pages and kept for reuse: those of short strings and of character sets.
#pragma once

#include "foundation/inc/memorymanager.h"
#include "foundation/inc/poison.h"

namespace Tsx {

/// No lock of its own: the owner guards it. Pages stay until the manager goes; blocks that are still out then
/// are lost, and nothing reports them.
///
///   block size    step    bytes for blocks in a page    blocks a page
///   8 or less     16      65520                         4095
///   32            32      65504                         2047
///   64            64      65472                         1023
///   128           128     65408                         511
class CBlockManager : public IMemoryManager {
public:
    /// What a page begins with; its blocks follow.
    struct CPage {
        CPage* next;
        std::uint64_t reserved; // 0
    };
    static_assert(sizeof(CPage) == 16);

    explicit CBlockManager(std::int32_t blockSize);
    ~CBlockManager() override;
    CBlockManager(const CBlockManager&) = delete;
    CBlockManager& operator=(const CBlockManager&) = delete;

    /// One block; asking for more than the block size is an assertion.
    void* Alloc(std::int32_t size) override;
    void Free(void* block) override;

    /// The same without the check, for owners that know the size.
    void* AllocBlock() {
        void* block = TryAllocBlock();
        return block ? block : AllocFromPage(NewPage());
    }

    /// AllocBlock in three steps, for owners whose lock is not to be held over a call of the system: null where a page
    /// is missing, the page, and the block with it. NewPage needs no lock and raises CMemoryException; the block counts
    /// as in use from the first step on, also when the page cannot be had.
    void* TryAllocBlock() {
        InUseBytes += BlockSize;
        return TakeBlock();
    }
    CPage* NewPage() const;
    void* AllocFromPage(CPage* page) {
        page->next = SparePages;
        SparePages = page;
        return TakeBlock();
    }

    void FreeBlock(void* block) {
        if (!block) {
            return;
        }
        auto* link = static_cast<CFreeBlock*>(block);
        link->next = FreeList;
        FreeList = link;
        PoisonMemory(block, static_cast<std::size_t>(BlockStep));
        FreeBytes += BlockSize;
        InUseBytes -= BlockSize;
        if (InUseBytes == 0) {
            Reset();
        }
    }

    /// Forgets all blocks, also those that are out, and keeps the pages for later.
    void Reset();

    std::int32_t GetInUseBytes() const { return InUseBytes; }
    std::int32_t GetBlockSize() const { return BlockSize; }

protected:
    struct CFreeBlock {
        CFreeBlock* next;
    };
    IMemoryManager* PageManager; // serves the pages; not owned
    CFreeBlock* FreeList = nullptr;
    CPage* UsedPages = nullptr; // the head is the current one
    CPage* SparePages = nullptr;
    std::int32_t PageUsed = 0;  // bytes handed out of the current page
    std::int32_t FreeBytes = 0; // on FreeList
    std::int32_t BlockSize;
    std::int32_t BlockStep;    // the larger of the size and 8, rounded up to a multiple of 16
    std::int32_t PageCapacity; // bytes for blocks in a page
    std::int32_t InUseBytes = 0;
    std::int32_t PageAllocSize; // bytes of a whole page

private:
    static char* FirstBlock(CPage* page) { return reinterpret_cast<char*>(page + 1); }

    // Null where a page is missing.
    void* TakeBlock() {
        void* block = FreeList;
        if (block) {
            UnpoisonMemory(block, static_cast<std::size_t>(BlockSize));
            FreeList = FreeList->next;
            FreeBytes -= BlockSize;
        } else if (UsedPages && PageUsed + BlockStep <= PageCapacity) {
            block = FirstBlock(UsedPages) + PageUsed;
            UnpoisonMemory(block, static_cast<std::size_t>(BlockSize));
            PageUsed += BlockStep;
        } else {
            block = TakeFromSparePage();
        }
        return block;
    }
    void* TakeFromSparePage();
    void FreePages(CPage* pages);
};

/// The system's allocation granularity: 0x10000 as a rule. Asked once.
std::int32_t GetAllocationGranularity();

} // namespace Tsx
