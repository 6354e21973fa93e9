// The standard output handle and the console behind it.
#pragma once

#include "platform/inc/types.h"
#include <cstdint>

namespace Platform {

constexpr std::int32_t StdOutputHandle = -11; // STD_OUTPUT_HANDLE
constexpr std::int32_t StdErrorHandle = -12;  // STD_ERROR_HANDLE

/// The process's standard handle: null when it has none, InvalidHandle() on failure. Not to be closed.
Handle GetStdHandle(std::int32_t which);

/// Replaces a standard handle for this process; it stays the caller's.
bool SetStdHandle(std::int32_t which, Handle handle);

/// Writes `length` characters to a console. False when the handle is no console.
bool WriteConsole(Handle console, const char16_t* text, std::uint32_t length, std::uint32_t& written);

/// The code page in which bytes written to the console are shown; 0 without a console. 65001 on Linux.
std::uint32_t GetConsoleOutputCP();

} // namespace Platform
