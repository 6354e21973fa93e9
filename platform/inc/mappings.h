// Memory behind mapping objects: the page file's own, in pieces that are made visible as views. Where a view may begin
// is told by GetSystemInfo (memory.h).
#pragma once

#include "platform/inc/types.h"
#include <cstddef>
#include <cstdint>

namespace Platform {

constexpr std::uint32_t PageReadOnly = 0x02; // PAGE_READONLY
// PAGE_READWRITE, the other protection, is that of pages: PageReadWrite in memory.h.

constexpr std::uint32_t FileMapWrite = 2; // FILE_MAP_WRITE: reading and writing
constexpr std::uint32_t FileMapRead = 4;  // FILE_MAP_READ

/// A mapping object of a size given in two halves, all zero, backed by the page file; null on failure. `file` is
/// InvalidHandle(), security and name are null. Fails with 87 for a size of 0. CloseHandle takes the object back; what
/// it holds stays until the last view is gone too. The Linux layer backs all objects by one memory file.
Handle CreateFileMapping(Handle file, void* security, std::uint32_t protection, std::uint32_t sizeHigh,
                         std::uint32_t sizeLow, const char16_t* name);

/// Makes `size` bytes of a mapping object visible from an offset on (size 0: all up to the end), and returns where;
/// null on failure:
///
///   an offset that is no multiple of the allocation granularity    1132
///   bytes beyond the end, or none at all                           5
///   FileMapWrite over an object of PageReadOnly                    5
void* MapViewOfFile(Handle mapping, std::uint32_t access, std::uint32_t offsetHigh, std::uint32_t offsetLow,
                    std::size_t size);
/// `base` is what MapViewOfFile returned; any other address fails with 487.
bool UnmapViewOfFile(const void* base);
/// Size 0 means the whole view.
bool FlushViewOfFile(const void* base, std::size_t size);

/// MEMORYSTATUSEX, field by field. All sizes in bytes.
struct MemoryStatus {
    std::uint32_t length = 64; // of this record; any other value fails with 87
    std::uint32_t memoryLoad = 0;
    std::uint64_t totalPhysical = 0;
    std::uint64_t availablePhysical = 0;
    std::uint64_t totalPageFile = 0;
    std::uint64_t availablePageFile = 0; // what can still be allocated, in memory or on disk
    std::uint64_t totalVirtual = 0;
    std::uint64_t availableVirtual = 0;
    std::uint64_t availableExtendedVirtual = 0;
};
static_assert(sizeof(MemoryStatus) == 64);

/// The Linux layer fills in the four sizes of memory and page file, from what the kernel says is available.
bool GlobalMemoryStatusEx(MemoryStatus& status);

} // namespace Platform
