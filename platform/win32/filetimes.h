// FILETIME and the one number that stands for it above the platform layer.
#pragma once

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

/// A size or a position from its two words.
inline std::int64_t JoinWords(DWORD high, DWORD low) {
    return static_cast<std::int64_t>(std::uint64_t{high} << 32 | low);
}

} // namespace Platform
