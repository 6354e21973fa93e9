// The languages that the user and the system have chosen, and those that the system knows.
#pragma once

#include <cstdint>

namespace Platform {

constexpr std::uint32_t LcidEnglishUnitedStates = 0x409;
constexpr std::uint32_t LcidInstalled = 1; // LCID_INSTALLED

/// The language and country of the user as an LCID. On Linux it is that of the locale in the environment, English
/// (United States) for one that is not in the table of linux/locale.cpp.
std::uint32_t GetUserDefaultLCID();
/// Those of the system; on Linux English (United States).
std::uint32_t GetSystemDefaultLCID();
/// The system's language as a LANGID. On Linux it is that of the locale in the environment: a system has no other
/// language there than the one that it gives to its users.
std::uint16_t GetSystemDefaultLangID();

/// Whether the system can show the language of an LCID. On Linux texts are UTF-8 and need no data of a language, so
/// that each language of the table of linux/locale.cpp is installed, whatever country goes with it.
bool IsValidLocale(std::uint32_t lcid, std::uint32_t flags);

} // namespace Platform
