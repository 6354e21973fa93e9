// FILETIME and the one number that stands for it above the platform layer.
#pragma once

#include "platform/win32/windowsapi.h"
#include <cstdint>

namespace Platform {

inline std::int64_t TimeCount(const FILETIME& time) {
    return static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
}

inline FILETIME FileTime(std::int64_t count) {
    const auto bits = static_cast<std::uint64_t>(count);
    return {static_cast<DWORD>(bits), static_cast<DWORD>(bits >> 32)};
}

/// A size or a position from its two words.
inline std::int64_t FileSize(DWORD high, DWORD low) {
    return static_cast<std::int64_t>(std::uint64_t{high} << 32 | low);
}

} // namespace Platform
