#include "platform/inc/memory.h"

#include "platform/inc/lasterror.h"
#include "platform/inc/types.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <link.h>
#include <mutex>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace Platform {

namespace {

constexpr std::size_t Granularity = 0x10000; // as on Windows

// In front of each block of a heap. Keeps what Windows keeps: the size, and all blocks of the heap for its walk and its
// end.
struct alignas(16) BlockLink {
    BlockLink* previous;
    BlockLink* next;
    std::size_t size;
};

// In front of pages: how many bytes were mapped. It fills a page of its own, so that what follows stays aligned.
struct PagesHeader {
    void* mapping;
    std::size_t size;
};

} // namespace

struct HeapObject {
    std::recursive_mutex lock;
    BlockLink blocks{&blocks, &blocks, 0}; // a ring
};

namespace {

BlockLink* LinkOf(void* block) {
    return static_cast<BlockLink*>(block) - 1;
}

} // namespace

void* AllocateRuntimeHeap(std::size_t size) noexcept {
    PLATFORM_ALLOCATION_FAULT(AllocateRuntimeHeap);
    return std::malloc(size);
}

void FreeRuntimeHeap(void* block) noexcept {
    std::free(block);
}

Heap GetProcessHeap() {
    // Never destroyed: records on it are given back until the very end of the process.
    static auto* const heap = new HeapObject;
    return heap;
}

Heap HeapCreate(std::uint32_t, std::size_t, std::size_t) {
    PLATFORM_FAULT(HeapCreate, nullptr);
    Heap heap = new (std::nothrow) HeapObject;
    if (!heap) {
        SetLastError(ErrorNotEnoughMemory);
    }
    return heap;
}

bool HeapDestroy(Heap heap) {
    PLATFORM_FAULT(HeapDestroy, false);
    while (heap->blocks.next != &heap->blocks) {
        HeapFree(heap, 0, heap->blocks.next + 1);
    }
    delete heap;
    return true;
}

void* HeapAlloc(Heap heap, std::uint32_t, std::size_t size) noexcept {
    PLATFORM_ALLOCATION_FAULT(HeapAlloc);
    void* room = size <= SIZE_MAX - sizeof(BlockLink) ? std::malloc(sizeof(BlockLink) + size) : nullptr;
    if (!room) {
        SetLastError(ErrorNotEnoughMemory);
        return nullptr;
    }
    const std::lock_guard guard(heap->lock);
    BlockLink& head = heap->blocks;
    auto* link = new (room) BlockLink{&head, head.next, size};
    head.next->previous = link;
    head.next = link;
    return link + 1;
}

bool HeapFree(Heap heap, std::uint32_t, void* block) noexcept {
    PLATFORM_FAULT(HeapFree, false);
    if (!block) {
        return true;
    }
    BlockLink* link = LinkOf(block);
    const std::lock_guard guard(heap->lock);
    link->previous->next = link->next;
    link->next->previous = link->previous;
    std::free(link);
    return true;
}

std::size_t HeapSize(Heap, std::uint32_t, const void* block) {
    PLATFORM_FAULT(HeapSize, ~std::size_t{0});
    return (static_cast<const BlockLink*>(block) - 1)->size;
}

bool HeapLock(Heap heap) {
    PLATFORM_FAULT(HeapLock, false);
    heap->lock.lock();
    return true;
}

bool HeapUnlock(Heap heap) {
    PLATFORM_FAULT(HeapUnlock, false);
    heap->lock.unlock();
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
    entry.flags = HeapEntryBusy; // free blocks are the run-time's and not to be seen
    return true;
}

bool SetHeapLowFragmentation(Heap) {
    return true;
}

void* VirtualAlloc(void*, std::size_t size, std::uint32_t, std::uint32_t) noexcept {
    PLATFORM_ALLOCATION_FAULT(VirtualAlloc);
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    // One granule more than asked for leaves room for the header's page and for the alignment.
    const std::size_t mapped = size + Granularity + page;
    void* mapping = size < SIZE_MAX / 2
                        ? mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)
                        : MAP_FAILED;
    if (mapping == MAP_FAILED) {
        SetLastError(ErrorNotEnoughMemory);
        return nullptr;
    }
    char* first = static_cast<char*>(mapping) + page;
    const std::size_t beyond = reinterpret_cast<std::uintptr_t>(first) % Granularity;
    char* address = first + (beyond == 0 ? 0 : Granularity - beyond);
    new (address - page) PagesHeader{mapping, mapped};
    return address;
}

bool VirtualFree(void* address, std::size_t, std::uint32_t) {
    PLATFORM_FAULT(VirtualFree, false);
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const auto* header = reinterpret_cast<const PagesHeader*>(static_cast<char*>(address) - page);
    return munmap(header->mapping, header->size) == 0 || FailFromErrno();
}

SystemInfo GetSystemInfo() {
    return {static_cast<std::uint32_t>(sysconf(_SC_PAGESIZE)), static_cast<std::uint32_t>(Granularity)};
}

MemoryRegion QueryAddress(const void* address) {
    Dl_info info{};
    link_map* map = nullptr;
    if (dladdr1(address, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0) {
        // Not in a module. A page that is there can be asked for its state.
        const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
        auto* start = reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(address) & ~(page - 1));
        return {msync(start, page, MS_ASYNC) == 0, nullptr};
    }
    // The program itself has no name in the loader's list.
    void* module = dlopen(*map->l_name != '\0' ? map->l_name : nullptr, RTLD_NOW | RTLD_NOLOAD);
    if (module) {
        dlclose(module); // it stays loaded by whoever loaded it; only its name is wanted
    }
    return {true, static_cast<ModuleObject*>(module)};
}

} // namespace Platform
