#include "platform/inc/memory.h"

#include "platform/inc/lasterror.h"
#include "platform/inc/types.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include <cstdlib>
#include <dlfcn.h>
#include <link.h>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace Platform {

namespace {

constexpr std::size_t Granularity = 0x10000; // as on Windows

// In front of pages: how many bytes were mapped. It fills a page of its own, so that what follows stays aligned.
struct PagesHeader {
    void* mapping;
    std::size_t size;
};

} // namespace

void* AllocateRuntimeHeap(std::size_t size) noexcept {
    PLATFORM_ALLOCATION_FAULT(AllocateRuntimeHeap);
    return std::malloc(size);
}

void FreeRuntimeHeap(void* block) noexcept {
    std::free(block);
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
        return Fail(ErrorNotEnoughMemory, nullptr);
    }
    char* first = static_cast<char*>(mapping) + page;
    const std::size_t beyond = reinterpret_cast<std::uintptr_t>(first) % Granularity;
    char* address = first + (beyond == 0 ? 0 : Granularity - beyond);
    new (address - page) PagesHeader{mapping, mapped};
    return address;
}

bool VirtualFree(void* address, std::size_t, std::uint32_t) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const auto* header = reinterpret_cast<const PagesHeader*>(static_cast<char*>(address) - page);
    const bool released = munmap(header->mapping, header->size) == 0 || FailFromErrno();
    PLATFORM_FAULT(VirtualFree, false);
    return released;
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
        const char* start = static_cast<const char*>(address) - reinterpret_cast<std::uintptr_t>(address) % page;
        return {msync(const_cast<char*>(start), page, MS_ASYNC) == 0, nullptr};
    }
    // The program itself has no name in the loader's list.
    void* module = dlopen(*map->l_name != '\0' ? map->l_name : nullptr, RTLD_NOW | RTLD_NOLOAD);
    if (module) {
        dlclose(module); // it stays loaded by whoever loaded it; only its name is wanted
    }
    return {true, static_cast<ModuleObject*>(module)};
}

} // namespace Platform
