#include "foundation/inc/alloc.h"

#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/poison.h"
#include "foundation/inc/privateallocators.h"
#include "foundation/inc/roomybuffer.h"
#include "tests/support/recordinghandler.h"
#include "tests/support/text.h"
#include <set>
#include <vector>

using namespace Tsx;

namespace {

class CProbe : public CBlockManager {
public:
    using CBlockManager::BlockStep;
    using CBlockManager::CBlockManager;
    using CBlockManager::FreeBytes;
    using CBlockManager::FreeList;
    using CBlockManager::InUseBytes;
    using CBlockManager::PageAllocSize;
    using CBlockManager::PageCapacity;
    using CBlockManager::PageManager;
    using CBlockManager::PageUsed;
    using CBlockManager::SparePages;
    using CBlockManager::UsedPages;
};

} // namespace

TEST(BlockManager, StepsAndCapacities) {
    struct Row {
        std::int32_t size, step, capacity, blocks;
    };
    constexpr Row rows[] = {{1, 16, 65520, 4095},  {8, 16, 65520, 4095},  {17, 32, 65504, 2047},
                            {32, 32, 65504, 2047}, {64, 64, 65472, 1023}, {128, 128, 65408, 511}};
    for (const Row& row : rows) {
        CProbe manager(row.size);
        EXPECT_EQ(manager.BlockStep, row.step) << row.size;
        EXPECT_EQ(manager.PageCapacity, row.capacity) << row.size;
        EXPECT_EQ(manager.PageAllocSize, 0x10000) << row.size;
        EXPECT_EQ(manager.PageManager, &VirtualMemoryManager) << row.size;
        std::int32_t blocks = 0;
        while (!manager.UsedPages || !manager.UsedPages->next) {
            manager.AllocBlock();
            ++blocks;
        }
        EXPECT_EQ(blocks - 1, row.blocks) << "the last one opened the second page";
        EXPECT_EQ(manager.InUseBytes, blocks * row.size);
    }
    CProbe large(100000);
    EXPECT_EQ(large.PageCapacity, 100000);
    EXPECT_EQ(large.PageAllocSize, 100016);
}

TEST(BlockManager, StartsOverWhenTheLastBlockIsBack) {
    CProbe manager(32);
    void* const first = manager.AllocBlock();
    std::vector<void*> blocks{first};
    while (blocks.size() < 3000) { // more than a page
        blocks.push_back(manager.AllocBlock());
    }
    EXPECT_EQ(std::set<void*>(blocks.begin(), blocks.end()).size(), blocks.size());
    manager.Free(nullptr);
    manager.Free(blocks[5]);
    EXPECT_EQ(manager.FreeBytes, 32);
    EXPECT_EQ(manager.AllocBlock(), blocks[5]) << "the last one given back is the first to go out";
    for (void* block : blocks) {
        manager.Free(block);
    }
    EXPECT_EQ(manager.InUseBytes, 0);
    EXPECT_EQ(manager.FreeBytes, 0);
    EXPECT_EQ(manager.FreeList, nullptr);
    EXPECT_EQ(manager.UsedPages, nullptr);
    ASSERT_NE(manager.SparePages, nullptr);
    char* const spare = reinterpret_cast<char*>(manager.SparePages);
    EXPECT_EQ(manager.AllocBlock(), spare + 16) << "the first block of a spare page";
    EXPECT_TRUE(Raised<CInternalError>([&] { manager.Alloc(33); }));
}

#ifdef TSX_POISON
TEST(BlockManager, HidesFromTheSanitizerWhatItHoldsBack) {
    CProbe manager(32);
    auto* const kept = static_cast<char*>(manager.AllocBlock());
    auto* const block = static_cast<char*>(manager.AllocBlock());
    EXPECT_FALSE(__asan_address_is_poisoned(block + 31));
    EXPECT_TRUE(__asan_address_is_poisoned(block + 32)) << "not handed out yet";
    manager.Free(block);
    EXPECT_TRUE(__asan_address_is_poisoned(block));
    EXPECT_FALSE(__asan_address_is_poisoned(kept));
    EXPECT_EQ(manager.AllocBlock(), block);
    EXPECT_FALSE(__asan_address_is_poisoned(block));
}
#endif

TEST(HeapManager, CountsAndKeepsItsHeap) {
    CHeapManager manager;
    EXPECT_FALSE(manager.HasHeap()) << "a manager without a heap is allowed";
    manager.CreateHeap(0, false);
    manager.SetLowFragmentation();
    void* block = manager.Alloc(1000);
    manager.Free(nullptr);
    EXPECT_EQ(manager.GetBlockCount(), 1);
    EXPECT_EQ(manager.GetTotalBytes(), 1000);
    manager.DestroyHeap();
    EXPECT_TRUE(manager.HasHeap()) << "a block is out and must not be taken along";
    manager.Free(block);
    EXPECT_EQ(manager.GetTotalBytes(), 0);
    manager.DestroyHeap();
    EXPECT_FALSE(manager.HasHeap());
}

TEST(MemoryExceptionPool, KnowsItsExceptions) {
    auto raised = Raised<CMemoryException>([] { GenerateMemoryException(); });
    ASSERT_TRUE(raised);
    std::byte elsewhere[sizeof(CMemoryException)];
    EXPECT_TRUE(
        Raised<CInternalError>([&] { ReleaseMemoryException(reinterpret_cast<CMemoryException*>(elsewhere)); }));
    ReleaseMemoryException(nullptr);
    {
        CRecordingHandler handler;
        const CMessageHandlerScope scope(&handler);
        { const CMemoryException local; }
        EXPECT_EQ(handler.texts.size(), 1U) << "one outside the pool ends, and is told";
    }
    const void* const slot = raised.get();
    raised.reset();
    raised = Raised<CMemoryException>([] { GenerateMemoryException(); });
    EXPECT_EQ(raised.get(), slot) << "the first free slot";
}

TEST(CurrentManager, ABlockGoesBackToWhoServedIt) {
    class CCounting : public CRuntimeHeapManager {
    public:
        int out = 0;
        void* Alloc(std::int32_t size) override {
            if (size > 1000) {
                return nullptr;
            }
            ++out;
            return CRuntimeHeapManager::Alloc(size);
        }
        void Free(void* block) override {
            TSX_ASSERT(--out >= 0, u"f");
            CRuntimeHeapManager::Free(block);
        }
    } counting;
    EXPECT_EQ(CurrentMemoryManager(), &RuntimeHeapManager);
    const CMemoryManagerScope scope(&counting);
    void* const own = AllocateFromCurrentManager(10);
    void* switched = nullptr;
    {
        const CRuntimeHeapSwitcher switcher;
        EXPECT_EQ(CurrentMemoryManager(), &RuntimeHeapManager);
        switched = AllocateFromCurrentManager(10);
        FreeToOwnManager(own);
    }
    EXPECT_EQ(CurrentMemoryManager(), &counting);
    EXPECT_EQ(counting.out, 0);
    FreeToOwnManager(switched);
    EXPECT_EQ(counting.out, 0) << "the runtime heap's block did not come here";
    EXPECT_TRUE(Raised<CMemoryException>([] { AllocateFromCurrentManager(1000); })) << "a manager that gives null";
}

TEST(RoomyBuffer, LeavesAndReturnsToTheBuiltInRoom) {
    CRoomyBuffer buffer;
    buffer.SetSize(512);
    EXPECT_TRUE(buffer.IsBuiltIn());
    buffer.Data()[0] = u'x';
    buffer.SetSize(513);
    EXPECT_FALSE(buffer.IsBuiltIn());
    EXPECT_EQ(buffer.Capacity(), 1024) << "by 512 at least";
    buffer.SetSize(3000);
    EXPECT_EQ(buffer.Capacity(), 3000);
    buffer.SetSize(100);
    EXPECT_TRUE(buffer.IsBuiltIn());
    EXPECT_EQ(buffer.Data()[0], u'x');
}
