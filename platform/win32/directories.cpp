#include "platform/inc/directories.h"

#include "platform/win32/filetimes.h"
#include "platform/win32/windowsapi.h"
#include <cstring>

namespace Platform {

namespace {

void Fill(FindData& data, const WIN32_FIND_DATAW& found) {
    FillAttributes(data, found);
    static_assert(sizeof(data.name) == sizeof(found.cFileName));
    std::memcpy(data.name, found.cFileName, sizeof(data.name));
}

} // namespace

Handle FindFirstFile(const char16_t* path, FindData& data) {
    WIN32_FIND_DATAW found;
    Handle search = ::FindFirstFileW(Wide(path), &found);
    if (search != InvalidHandle()) {
        Fill(data, found);
    }
    return search;
}

bool FindNextFile(Handle search, FindData& data) {
    WIN32_FIND_DATAW found;
    if (::FindNextFileW(search, &found) == 0) {
        return false;
    }
    Fill(data, found);
    return true;
}

bool FindClose(Handle search) {
    return ::FindClose(search) != 0;
}

bool CreateDirectory(const char16_t* path, void* security) {
    return ::CreateDirectoryW(Wide(path), static_cast<SECURITY_ATTRIBUTES*>(security)) != 0;
}

bool RemoveDirectory(const char16_t* path) {
    return ::RemoveDirectoryW(Wide(path)) != 0;
}

bool GetDiskFreeSpaceEx(const char16_t* path, std::uint64_t* freeToCaller, std::uint64_t* total,
                        std::uint64_t* totalFree) {
    ULARGE_INTEGER values[3] = {};
    if (::GetDiskFreeSpaceExW(Wide(path), &values[0], &values[1], &values[2]) == 0) {
        return false;
    }
    std::uint64_t* const results[] = {freeToCaller, total, totalFree};
    for (int i = 0; i < 3; ++i) {
        if (results[i]) {
            *results[i] = values[i].QuadPart;
        }
    }
    return true;
}

std::uint32_t GetDriveType(const char16_t* root) {
    return ::GetDriveTypeW(Wide(root));
}

} // namespace Platform
