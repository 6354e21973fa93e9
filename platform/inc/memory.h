// Memory: the run-time heap, heaps of the system, pages. Every allocation that is not the system's own comes through
// here, so that a test build can make the n-th one fail.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Platform {

/// The run-time's malloc and free: null when memory is exhausted; free takes null.
void* AllocateRuntimeHeap(std::size_t size) noexcept;
void FreeRuntimeHeap(void* block) noexcept;

/// A heap of the system.
using Heap = struct HeapObject*;

/// The heap of the whole process; not to be destroyed.
Heap GetProcessHeap();
/// A private heap; null on failure. A maximum of 0 lets it grow. HeapDestroy gives back whatever is still allocated in
/// it.
Heap HeapCreate(std::uint32_t options, std::size_t initialSize, std::size_t maximumSize);
bool HeapDestroy(Heap heap);
/// A block aligned to 16; null when memory is exhausted.
void* HeapAlloc(Heap heap, std::uint32_t flags, std::size_t size) noexcept;
bool HeapFree(Heap heap, std::uint32_t flags, void* block) noexcept;
/// The size asked for when the block was allocated; all bits set on failure.
std::size_t HeapSize(Heap heap, std::uint32_t flags, const void* block);
/// Keeps other threads from a heap; between the two calls the caller itself asks it for nothing but the walk.
bool HeapLock(Heap heap);
bool HeapUnlock(Heap heap);

constexpr std::uint16_t HeapEntryBusy = 4; // PROCESS_HEAP_ENTRY_BUSY

/// A place in the walk through a heap: all zero before the first step.
struct HeapEntry {
    void* data = nullptr;
    std::size_t size = 0;
    std::uint16_t flags = 0;
    std::byte position[64] = {}; // the system's own
};

/// Steps to the next entry of a locked heap; false behind the last one.
bool HeapWalk(Heap heap, HeapEntry& entry);

/// Turns on the heap's low-fragmentation mode; false if the system lacks the call for it.
bool SetHeapLowFragmentation(Heap heap);

constexpr std::uint32_t MemCommit = 0x1000;   // MEM_COMMIT
constexpr std::uint32_t MemRelease = 0x8000;  // MEM_RELEASE
constexpr std::uint32_t PageReadWrite = 0x04; // PAGE_READWRITE

/// Whole pages, zeroed; null when memory is exhausted. Released with size 0 and MemRelease.
void* VirtualAlloc(void* address, std::size_t size, std::uint32_t type, std::uint32_t protection) noexcept;
bool VirtualFree(void* address, std::size_t size, std::uint32_t type);

struct SystemInfo {
    std::uint32_t pageSize;
    std::uint32_t allocationGranularity;
};

/// 0x10000 is the granularity on both systems.
SystemInfo GetSystemInfo();

/// Where an address lies: the module that holds it, or null if it is in none.
struct MemoryRegion {
    bool committed = false;
    struct ModuleObject* module = nullptr;
};

/// What VirtualQuery tells of an address.
MemoryRegion QueryAddress(const void* address);

} // namespace Platform
