// The process: how it starts, its command line, its end.
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

/// Ends the process at once and abnormally.
[[noreturn]] void Abort();

} // namespace Platform
