// The languages that the user and the system have chosen.
#pragma once

#include <cstdint>

namespace Platform {

constexpr std::uint32_t LcidEnglishUnitedStates = 0x409;

/// The language and country of the user as an LCID. On Linux it is that of the locale in the environment, English
/// (United States) for one that is not in the table of linux/locale.cpp.
std::uint32_t GetUserDefaultLCID();
/// Those of the system; on Linux English (United States).
std::uint32_t GetSystemDefaultLCID();

} // namespace Platform
