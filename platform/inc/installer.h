// The service that installs programs and knows where their components are.
#pragma once

#include <cstdint>

namespace Platform {

constexpr std::uint32_t InstallModeExisting = 0xFFFFFFFF; // INSTALLMODE_EXISTING: only what is there, install nothing

/// Writes the path of a component's variant, terminated, to a buffer of `size` characters; `size` gets the length
/// without the terminator. Returns a Windows code, ErrorSuccess or why not. On Linux nothing is known:
/// ErrorUnknownComponent.
std::uint32_t MsiProvideQualifiedComponent(const char16_t* component, const char16_t* qualifier,
                                           std::uint32_t installMode, char16_t* path, std::uint32_t& size);

} // namespace Platform
