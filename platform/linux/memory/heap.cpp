// The heaps of this system: private ones and that of the process. Each keeps what Windows keeps: the size of every
// block as it was asked for, and all blocks for its walk and its end. Blocks come from the C library; small ones that
// were freed wait for their next use: without that, blocks in turn take 1.7 to 5 times as long.
#include "platform/inc/memory.h"

#include "platform/inc/lasterror.h"
#include "platform/inc/leaflock.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <sanitizer/asan_interface.h>
#include <utility>

namespace Platform {

namespace {

constexpr std::int32_t MostWaiting = 8; // of each class

// Sizes with their links, in classes of an eighth of a power of two: 64, 72, 80 ... 120, 128, 144 ... up to 8 KiB.
constexpr std::size_t SmallestClass = 64;
constexpr std::size_t LargestClass = 8192;
constexpr std::size_t ClassCount = 57;

// In front of each block.
struct alignas(16) BlockLink {
    BlockLink* previous;
    BlockLink* next; // of all blocks of the heap, or of the waiting ones of the class
    std::size_t size;
};

// The class whose blocks have room for that many bytes.
std::size_t ClassOf(std::size_t bytes) {
    if (bytes <= SmallestClass) {
        return 0;
    }
    const auto power = static_cast<std::size_t>(std::bit_width(bytes - 1)) - 1; // 2^power < bytes <= 2^(power + 1)
    const std::size_t eighth = (bytes - 1) >> (power - 3) & 7;
    return (power - 6) * 8 + eighth + 1;
}

std::size_t RoomOf(std::size_t blockClass) {
    return (8 + blockClass % 8) << (3 + blockClass / 8);
}

struct WaitingBlocks {
    BlockLink* first = nullptr;
    std::int32_t count = 0;
};

} // namespace

struct HeapObject {
    LeafLock lock;                         // over the rest
    BlockLink blocks{&blocks, &blocks, 0}; // a ring
    WaitingBlocks waiting[ClassCount];
};

namespace {

BlockLink* LinkOf(void* block) {
    return static_cast<BlockLink*>(block) - 1;
}

// The room of a block that waits, or null. Under the heap's lock, as the next two.
void* TakeWaiting(Heap heap, std::size_t bytes) {
    if (bytes > LargestClass) {
        return nullptr;
    }
    const std::size_t blockClass = ClassOf(bytes);
    WaitingBlocks& waiting = heap->waiting[blockClass];
    BlockLink* link = waiting.first;
    if (link) {
        ASAN_UNPOISON_MEMORY_REGION(link, RoomOf(blockClass));
        waiting.first = link->next;
        --waiting.count;
    }
    return link;
}

// False for a block that is not to wait.
bool LetWait(Heap heap, BlockLink* link) {
    const std::size_t bytes = sizeof(BlockLink) + link->size;
    if (bytes > LargestClass) {
        return false;
    }
    WaitingBlocks& waiting = heap->waiting[ClassOf(bytes)];
    if (waiting.count == MostWaiting) {
        return false;
    }
    link->next = waiting.first;
    waiting.first = link;
    ++waiting.count;
    ASAN_POISON_MEMORY_REGION(link + 1, link->size);
    return true;
}

BlockLink* EnterBlock(Heap heap, void* room, std::size_t size) {
    BlockLink& head = heap->blocks;
    auto* link = new (room) BlockLink{&head, head.next, size};
    head.next->previous = link;
    head.next = link;
    return link;
}

// As many bytes as the class has, so that the block can serve all of it later.
void* NewRoom(std::size_t bytes) {
    return std::malloc(bytes <= LargestClass ? RoomOf(ClassOf(bytes)) : bytes);
}

// Takes the place of the C library's guard, which stands behind the room of the class. Empty but for AddressSanitizer.
void HideRoomBehind(const BlockLink* link) {
    const std::size_t bytes = sizeof(BlockLink) + link->size;
    if (bytes <= LargestClass) {
        ASAN_POISON_MEMORY_REGION(reinterpret_cast<const std::byte*>(link) + bytes, RoomOf(ClassOf(bytes)) - bytes);
    }
}

} // namespace

Heap GetProcessHeap() {
    // Never destroyed: records on it are given back until the very end of the process.
    static auto* const heap = new HeapObject;
    return heap;
}

Heap HeapCreate(std::uint32_t, std::size_t, std::size_t) {
    PLATFORM_ALLOCATION_FAULT(HeapCreate);
    Heap heap = new (std::nothrow) HeapObject;
    if (!heap) {
        SetLastError(ErrorNotEnoughMemory);
    }
    return heap;
}

bool HeapDestroy(Heap heap) {
    while (heap->blocks.next != &heap->blocks) {
        BlockLink* link = heap->blocks.next;
        heap->blocks.next = link->next;
        std::free(link);
    }
    for (const WaitingBlocks& waiting : heap->waiting) {
        for (BlockLink* link = waiting.first; link;) {
            std::free(std::exchange(link, link->next));
        }
    }
    delete heap;
    PLATFORM_FAULT(HeapDestroy, false);
    return true;
}

void* HeapAlloc(Heap heap, std::uint32_t, std::size_t size) noexcept {
    PLATFORM_ALLOCATION_FAULT(HeapAlloc);
    if (size >= SIZE_MAX / 2) {
        return Fail(ErrorNotEnoughMemory, nullptr);
    }
    const std::size_t bytes = sizeof(BlockLink) + size;
    BlockLink* link = nullptr;
    {
        const LeafLockGuard guard(heap->lock);
        if (void* room = TakeWaiting(heap, bytes)) {
            link = EnterBlock(heap, room, size);
        }
    }
    if (!link) {
        void* room = NewRoom(bytes);
        if (!room) {
            return Fail(ErrorNotEnoughMemory, nullptr);
        }
        const LeafLockGuard guard(heap->lock);
        link = EnterBlock(heap, room, size);
    }
    HideRoomBehind(link);
    return link + 1;
}

bool HeapFree(Heap heap, std::uint32_t, void* block) noexcept {
    if (!block) {
        return true;
    }
    BlockLink* link = LinkOf(block);
    bool waits = false;
    {
        const LeafLockGuard guard(heap->lock);
        link->previous->next = link->next;
        link->next->previous = link->previous;
        waits = LetWait(heap, link);
    }
    if (!waits) {
        std::free(link);
    }
    PLATFORM_FAULT(HeapFree, false);
    return true;
}

std::size_t HeapSize(Heap, std::uint32_t, const void* block) {
    PLATFORM_FAULT(HeapSize, ~std::size_t{0});
    return (static_cast<const BlockLink*>(block) - 1)->size;
}

bool HeapLock(Heap heap) {
    PLATFORM_FAULT(HeapLock, false);
    heap->lock.Enter();
    return true;
}

bool HeapUnlock(Heap heap) {
    PLATFORM_FAULT(HeapUnlock, false);
    heap->lock.Leave();
    return true;
}

bool HeapWalk(Heap heap, HeapEntry& entry) {
    PLATFORM_FAULT(HeapWalk, false);
    BlockLink* next = (entry.data ? LinkOf(entry.data) : &heap->blocks)->next;
    if (next == &heap->blocks) {
        return Fail(ErrorNoMoreItems);
    }
    entry.data = next + 1;
    entry.size = next->size;
    entry.flags = HeapEntryBusy; // free blocks are not to be seen
    return true;
}

bool SetHeapLowFragmentation(Heap) {
    return true;
}

} // namespace Platform
