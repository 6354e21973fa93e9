// The variables of the process's environment.
#pragma once

#include <cstdint>

namespace Platform {

/// Writes a text, terminated, with each %NAME% replaced by that variable, whatever the case of its name; one that is
/// not set stays as it is. Returns the characters needed, terminator included; more than `size` means that the buffer
/// holds nothing of use. 0 on failure.
std::uint32_t ExpandEnvironmentStrings(const char16_t* text, char16_t* buffer, std::uint32_t size);

} // namespace Platform
