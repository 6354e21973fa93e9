// FILETIME and the one number that stands for it above the platform layer.
#pragma once

#include "platform/inc/fileattributes.h"
#include "platform/win32/windowsapi.h"
#include <bit>
#include <cstdint>

namespace Platform {

// The two words of a FILETIME lie in memory as the number that they stand for.
inline std::int64_t TimeCount(FILETIME time) {
    return std::bit_cast<std::int64_t>(time);
}

inline FILETIME NativeTime(std::int64_t count) {
    return std::bit_cast<FILETIME>(count);
}

/// From a record of the system's that has the fields of WIN32_FILE_ATTRIBUTE_DATA.
template <class TFound>
void FillAttributes(FileAttributeData& data, const TFound& found) {
    data.attributes = found.dwFileAttributes;
    data.creationTime = TimeCount(found.ftCreationTime);
    data.lastAccessTime = TimeCount(found.ftLastAccessTime);
    data.lastWriteTime = TimeCount(found.ftLastWriteTime);
    data.size = static_cast<std::int64_t>(std::uint64_t{found.nFileSizeHigh} << 32 | found.nFileSizeLow);
}

} // namespace Platform
