#include "platform/inc/files.h"

#include "platform/win32/windowsapi.h"
#include <cstring>

namespace Platform {

Handle CreateFile(const char16_t* path, std::uint32_t access, std::uint32_t share, std::uint32_t disposition,
                  std::uint32_t attributes) {
    return ::CreateFileW(Wide(path), access, share, nullptr, disposition, attributes, nullptr);
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

bool SetFilePointerEx(Handle file, std::int64_t distance, std::int64_t& position, std::uint32_t method) {
    LARGE_INTEGER move;
    LARGE_INTEGER result{};
    move.QuadPart = distance;
    const bool success = ::SetFilePointerEx(file, move, &result, method) != 0;
    position = result.QuadPart;
    return success;
}

std::uint32_t GetFileType(Handle file) {
    return ::GetFileType(file);
}

Handle FindFirstFile(const char16_t* path, FindData& data) {
    WIN32_FIND_DATAW found;
    Handle search = ::FindFirstFileW(Wide(path), &found);
    if (search != InvalidHandle()) {
        data.attributes = found.dwFileAttributes;
        static_assert(sizeof(data.name) == sizeof(found.cFileName));
        std::memcpy(data.name, found.cFileName, sizeof(data.name));
    }
    return search;
}

bool FindClose(Handle search) {
    return ::FindClose(search) != 0;
}

std::uint32_t SetErrorMode(std::uint32_t mode) {
    return ::SetErrorMode(mode);
}

} // namespace Platform
