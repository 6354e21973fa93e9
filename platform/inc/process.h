// The process: how it starts, its command line, which boxes the system may show in it, its end.
#pragma once

#include <cstdint>

/// The program, supplied by the application and called once by the platform's entry point. Its result is the exit code.
std::int32_t ProgramMain();

namespace Platform {

/// The whole command line as one terminated text that lives as long as the process. On Linux it is put together from
/// the arguments in the quoting that the program's own splitter undoes, so that each argument arrives as it was given.
const char16_t* GetCommandLine();

/// The number by which the system knows this process.
std::uint32_t GetCurrentProcessId();

constexpr std::uint32_t SemFailCriticalErrors = 0x0001; // SEM_FAILCRITICALERRORS
constexpr std::uint32_t SemNoOpenFileErrorBox = 0x8000; // SEM_NOOPENFILEERRORBOX

/// Sets the process's error mode (a sum of the Sem bits) and returns the one before.
std::uint32_t SetErrorMode(std::uint32_t mode);

/// Ends the process at once and abnormally.
[[noreturn]] void Abort();

} // namespace Platform
