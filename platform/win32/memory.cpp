#include "platform/inc/memory.h"

#include "platform/win32/windowsapi.h"
#include <cstdlib>
#include <cstring>

namespace Platform {

namespace {

HANDLE Native(Heap heap) {
    return reinterpret_cast<HANDLE>(heap);
}

Heap FromNative(HANDLE heap) {
    return reinterpret_cast<Heap>(heap);
}

} // namespace

void* AllocateRuntimeHeap(std::size_t size) noexcept {
    return std::malloc(size);
}

void FreeRuntimeHeap(void* block) noexcept {
    std::free(block);
}

Heap GetProcessHeap() {
    return FromNative(::GetProcessHeap());
}

Heap HeapCreate(std::uint32_t options, std::size_t initialSize, std::size_t maximumSize) {
    return FromNative(::HeapCreate(options, initialSize, maximumSize));
}

bool HeapDestroy(Heap heap) {
    return ::HeapDestroy(Native(heap)) != 0;
}

void* HeapAlloc(Heap heap, std::uint32_t flags, std::size_t size) noexcept {
    return ::HeapAlloc(Native(heap), flags, size);
}

bool HeapFree(Heap heap, std::uint32_t flags, void* block) noexcept {
    return ::HeapFree(Native(heap), flags, block) != 0;
}

std::size_t HeapSize(Heap heap, std::uint32_t flags, const void* block) {
    return ::HeapSize(Native(heap), flags, block);
}

bool HeapLock(Heap heap) {
    return ::HeapLock(Native(heap)) != 0;
}

bool HeapUnlock(Heap heap) {
    return ::HeapUnlock(Native(heap)) != 0;
}

bool HeapWalk(Heap heap, HeapEntry& entry) {
    static_assert(sizeof(PROCESS_HEAP_ENTRY) <= sizeof(entry.position));
    PROCESS_HEAP_ENTRY native;
    std::memcpy(&native, entry.position, sizeof(native));
    if (!::HeapWalk(Native(heap), &native)) {
        return false;
    }
    std::memcpy(entry.position, &native, sizeof(native));
    entry.data = native.lpData;
    entry.size = native.cbData;
    entry.flags = native.wFlags;
    return true;
}

bool SetHeapLowFragmentation(Heap heap) {
    // AS DESIGNED: looked up by name, although every system that this program starts on has it.
    auto* set = reinterpret_cast<decltype(&::HeapSetInformation)>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), "HeapSetInformation")));
    if (!set) {
        return false;
    }
    ULONG lowFragmentation = 2;
    set(Native(heap), HeapCompatibilityInformation, &lowFragmentation, sizeof(lowFragmentation));
    return true;
}

void* VirtualAlloc(void* address, std::size_t size, std::uint32_t type, std::uint32_t protection) noexcept {
    return ::VirtualAlloc(address, size, type, protection);
}

bool VirtualFree(void* address, std::size_t size, std::uint32_t type) {
    return ::VirtualFree(address, size, type) != 0;
}

SystemInfo GetSystemInfo() {
    SYSTEM_INFO info;
    ::GetSystemInfo(&info);
    return {info.dwPageSize, info.dwAllocationGranularity};
}

MemoryRegion QueryAddress(const void* address) {
    MEMORY_BASIC_INFORMATION info;
    if (::VirtualQuery(address, &info, sizeof(info)) != sizeof(info) || info.State != MEM_COMMIT) {
        return {};
    }
    // The base of any other allocation is no module.
    return {true, info.Type == MEM_IMAGE ? static_cast<ModuleObject*>(info.AllocationBase) : nullptr};
}

} // namespace Platform
