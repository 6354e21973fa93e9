#include "platform/inc/mappings.h"

#include "platform/win32/windowsapi.h"
#include <cstring>

namespace Platform {

Handle CreateFileMapping(Handle file, void* security, std::uint32_t protection, std::uint32_t sizeHigh,
                         std::uint32_t sizeLow, const char16_t* name) {
    return ::CreateFileMappingW(file, static_cast<SECURITY_ATTRIBUTES*>(security), protection, sizeHigh, sizeLow,
                                Wide(name));
}

void* MapViewOfFile(Handle mapping, std::uint32_t access, std::uint32_t offsetHigh, std::uint32_t offsetLow,
                    std::size_t size) {
    return ::MapViewOfFile(mapping, access, offsetHigh, offsetLow, size);
}

bool UnmapViewOfFile(const void* base) {
    return ::UnmapViewOfFile(base) != 0;
}

bool FlushViewOfFile(const void* base, std::size_t size) {
    return ::FlushViewOfFile(base, size) != 0;
}

bool GlobalMemoryStatusEx(MemoryStatus& status) {
    static_assert(sizeof(MEMORYSTATUSEX) == sizeof(MemoryStatus));
    MEMORYSTATUSEX native;
    std::memcpy(&native, &status, sizeof(native));
    const bool success = ::GlobalMemoryStatusEx(&native) != 0;
    std::memcpy(&status, &native, sizeof(status));
    return success;
}

} // namespace Platform
