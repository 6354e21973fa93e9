// The managers of memory, and what gets its room from them.
#include "foundation/inc/alloc.h"

#include "foundation/inc/debugtrace.h"
#include "foundation/inc/privateallocators.h"
#include "foundation/inc/roomybuffer.h"
#include "tests/support/recordinghandler.h"
#include <cstring>
#include <set>
#include <vector>

using namespace Tsx;

namespace {

class CProbe : public CBlockManager {
public:
    using CBlockManager::CBlockManager;
    using CBlockManager::FreeBytes;
    using CBlockManager::FreeList;
    using CBlockManager::InUseBytes;
    using CBlockManager::SparePages;
    using CBlockManager::UsedPages;
};

} // namespace

TEST(BlockManager, StartsOverWhenTheLastBlockIsBack) {
    CProbe manager(32);
    std::vector<void*> blocks;
    while (!manager.UsedPages || !manager.UsedPages->next) {
        blocks.push_back(manager.AllocBlock());
        std::memset(blocks.back(), 1, 32);
    }
    EXPECT_EQ(blocks.size(), 65504U / 32 + 1) << "the last one opened the second page";
    EXPECT_EQ(manager.InUseBytes, static_cast<std::int32_t>(blocks.size()) * 32);
    EXPECT_EQ(std::set<void*>(blocks.begin(), blocks.end()).size(), blocks.size());
    manager.Free(nullptr);
    manager.Free(blocks[5]);
    EXPECT_EQ(manager.FreeBytes, 32);
    EXPECT_EQ(manager.AllocBlock(), blocks[5]) << "the last one given back is the first to go out";
    for (void* block : blocks) {
        manager.Free(block);
    }
    EXPECT_TRUE(manager.InUseBytes == 0 && manager.FreeBytes == 0 && !manager.FreeList && !manager.UsedPages);
    ASSERT_TRUE(manager.SparePages);
    char* const spare = reinterpret_cast<char*>(manager.SparePages);
    EXPECT_EQ(manager.AllocBlock(), spare + 16) << "the first block of a spare page";
    EXPECT_TRUE(Raised<CInternalError>([&] { manager.Alloc(33); }));
}

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
    const CMemoryException* const other = raised.get() + 1;
    EXPECT_TRUE(Raised<CInternalError>([other] { ReleaseMemoryException(other); }));
    CRecordingHandler handler;
    {
        const CMessageHandlerScope scope(&handler);
        const CMemoryException local;
    }
    EXPECT_EQ(handler.texts.size(), 1U) << "one outside the pool ends, and is told";
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
            ++out;
            return size > 1000 ? nullptr : CRuntimeHeapManager::Alloc(size);
        }
        void Free(void* block) override {
            --out;
            CRuntimeHeapManager::Free(block);
        }
    } counting;
    const CMemoryManagerScope scope(&counting);
    void* const own = AllocateFromCurrentManager(10);
    void* switched = nullptr;
    {
        const CRuntimeHeapSwitcher switcher;
        EXPECT_EQ(CurrentMemoryManager(), &RuntimeHeapManager);
        switched = AllocateFromCurrentManager(10);
        EXPECT_EQ(counting.out, 1);
        FreeToOwnManager(own);
    }
    EXPECT_EQ(CurrentMemoryManager(), &counting);
    FreeToOwnManager(switched);
    EXPECT_EQ(counting.out, 0) << "the runtime heap's block did not come here";
    EXPECT_TRUE(Raised<CMemoryException>([] { AllocateFromCurrentManager(1000); })) << "a manager that gives null";
}

TEST(RoomyBuffer, LeavesAndReturnsToTheBuiltInRoom) {
    for (const std::size_t length : {510U, 511U, 512U, 513U, 1024U}) { // a trace of just its own size
        const std::u16string text(length, u'x');
        CRoomyBuffer line;
        EXPECT_EQ(FormatLine(line, u"%s", {CFormatArgument(text.c_str())}), text) << length;
    }
    CRoomyBuffer buffer;
    for (const auto& [size, capacity] : {std::pair(512, 512), {513, 1024}, {3000, 3000}, {513, 3000}, {100, 512}}) {
        buffer.SetSize(size);
        EXPECT_EQ(std::pair(buffer.Capacity(), buffer.IsBuiltIn()), std::pair(capacity, capacity == 512)) << size;
        buffer.Data()[0] = size == 512 ? u'x' : buffer.Data()[0];
    }
    EXPECT_EQ(buffer.Data()[0], u'x') << "taken along on both ways";
}
