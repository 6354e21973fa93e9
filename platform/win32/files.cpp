#include "platform/inc/files.h"

#include "platform/win32/filetimes.h"
#include "platform/win32/windowsapi.h"

namespace Platform {

Handle CreateFile(const char16_t* path, std::uint32_t access, std::uint32_t share, void* security,
                  std::uint32_t disposition, std::uint32_t attributes, Handle templateFile) {
    return ::CreateFileW(Wide(path), access, share, static_cast<SECURITY_ATTRIBUTES*>(security), disposition,
                         attributes, templateFile);
}

bool CloseHandle(Handle handle) {
    return ::CloseHandle(handle) != 0;
}

bool ReadFile(Handle file, void* buffer, std::uint32_t count, std::uint32_t& read) {
    DWORD done = 0;
    const bool success = ::ReadFile(file, buffer, count, &done, nullptr) != 0;
    read = done;
    return success;
}

bool WriteFile(Handle file, const void* buffer, std::uint32_t count, std::uint32_t& written) {
    DWORD done = 0;
    const bool success = ::WriteFile(file, buffer, count, &done, nullptr) != 0;
    written = done;
    return success;
}

std::uint32_t SetFilePointer(Handle file, std::int32_t distance, std::int32_t* distanceHigh, std::uint32_t method) {
    LONG high = distanceHigh ? *distanceHigh : 0;
    const DWORD low = ::SetFilePointer(file, distance, distanceHigh ? &high : nullptr, method);
    if (distanceHigh) {
        *distanceHigh = static_cast<std::int32_t>(high);
    }
    return low;
}

bool SetFilePointerEx(Handle file, std::int64_t distance, std::int64_t& position, std::uint32_t method) {
    LARGE_INTEGER move;
    LARGE_INTEGER result{};
    move.QuadPart = distance;
    const bool success = ::SetFilePointerEx(file, move, &result, method) != 0;
    position = result.QuadPart;
    return success;
}

bool SetEndOfFile(Handle file) {
    return ::SetEndOfFile(file) != 0;
}

std::uint32_t GetFileSize(Handle file, std::uint32_t* sizeHigh) {
    DWORD high = 0;
    const DWORD low = ::GetFileSize(file, sizeHigh ? &high : nullptr);
    if (sizeHigh) {
        *sizeHigh = high;
    }
    return low;
}

bool SetFileTime(Handle file, const std::int64_t* creation, const std::int64_t* lastAccess,
                 const std::int64_t* lastWrite) {
    const std::int64_t* const values[] = {creation, lastAccess, lastWrite};
    FILETIME times[3] = {};
    for (int i = 0; i < 3; ++i) {
        times[i] = values[i] ? NativeTime(*values[i]) : FILETIME{};
    }
    return ::SetFileTime(file, creation ? &times[0] : nullptr, lastAccess ? &times[1] : nullptr,
                         lastWrite ? &times[2] : nullptr) != 0;
}

bool FlushFileBuffers(Handle file) {
    return ::FlushFileBuffers(file) != 0;
}

std::uint32_t GetFileType(Handle file) {
    return ::GetFileType(file);
}

} // namespace Platform
