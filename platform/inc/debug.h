// Debugging, and the system's version. Used by the debug trace, the stop modes and the heap manager.
#pragma once

#include <cstdint>

namespace Platform {

/// A line for an attached debugger. On Linux it goes to standard error if the environment variable
/// TESSARIX_DEBUG_OUTPUT is set, and nowhere otherwise.
void OutputDebugString(const char16_t* text);

/// Whether a debugger is attached to this process.
bool IsDebuggerPresent();

/// Stops in the debugger; without one the process ends.
void DebugBreak();

struct OsVersion {
    std::uint32_t platformId; // 2 is the NT family
    std::uint32_t major;
    std::uint32_t minor;
};

/// GetVersionExW. The Linux layer answers as the Windows version whose behaviour it follows: 6.2 of the NT family.
OsVersion GetVersionEx();

} // namespace Platform
