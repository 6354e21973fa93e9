#include "platform/inc/filenames.h"

#include "platform/win32/filetimes.h"
#include "platform/win32/windowsapi.h"

namespace Platform {

static_assert(MaxPath == MAX_PATH);

std::uint32_t GetFileAttributes(const char16_t* path) {
    return ::GetFileAttributesW(Wide(path));
}

bool GetFileAttributesEx(const char16_t* path, FileAttributeData& data) {
    WIN32_FILE_ATTRIBUTE_DATA found;
    if (::GetFileAttributesExW(Wide(path), GetFileExInfoStandard, &found) == 0) {
        return false;
    }
    FillAttributes(data, found);
    return true;
}

bool SetFileAttributes(const char16_t* path, std::uint32_t attributes) {
    return ::SetFileAttributesW(Wide(path), attributes) != 0;
}

bool DeleteFile(const char16_t* path) {
    return ::DeleteFileW(Wide(path)) != 0;
}

bool CopyFile(const char16_t* source, const char16_t* target, bool failIfExists) {
    return ::CopyFileW(Wide(source), Wide(target), failIfExists) != 0;
}

bool MoveFile(const char16_t* source, const char16_t* target) {
    return ::MoveFileW(Wide(source), Wide(target)) != 0;
}

bool MoveFileEx(const char16_t* source, const char16_t* target, std::uint32_t flags) {
    return ::MoveFileExW(Wide(source), Wide(target), flags) != 0;
}

std::uint32_t GetFullPathName(const char16_t* path, std::uint32_t size, char16_t* buffer, char16_t** filePart) {
    return ::GetFullPathNameW(Wide(path), size, Wide(buffer), reinterpret_cast<wchar_t**>(filePart));
}

std::uint32_t SearchPath(const char16_t* path, const char16_t* file, const char16_t* extension, std::uint32_t size,
                         char16_t* buffer, char16_t** filePart) {
    return ::SearchPathW(Wide(path), Wide(file), Wide(extension), size, Wide(buffer),
                         reinterpret_cast<wchar_t**>(filePart));
}

} // namespace Platform
