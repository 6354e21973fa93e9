// The last resort: a fixed text in the system's box. The ways of failing that find no memory, no handler or no output
// left end here, and the hooks of the run-time.
#pragma once

#include <atomic>
#include <cstdint>

namespace Tsx {

constexpr const char16_t* FoundationTitle = u"Tessarix";
constexpr const char16_t* NotEnoughMemoryText = u"Not enough memory!";
constexpr const char16_t* DoubleErrorText = u"Double internal error!\nApplication terminated.";
constexpr const char16_t* UnhandledErrorText = u"Unhandled Internal Error";
constexpr std::uint32_t FatalMessageStyle = 4112; // MB_ICONHAND and MB_SYSTEMMODAL

/// Suppresses the boxes of the last resort. AS DESIGNED: nothing in this program sets it.
extern std::atomic<bool> FatalNoMessageBox;

/// Shows a text in the system's box, titled FoundationTitle, and returns its button; 0 if there was no box. Takes no
/// memory of the foundation's, raises nothing, and works on any thread at any time of a process's life.
std::int32_t ShowLastResort(const char16_t* text, std::uint32_t style = FatalMessageStyle) noexcept;
/// Shows a text and ends the process abnormally.
[[noreturn]] void EndWithLastResort(const char16_t* text) noexcept;

} // namespace Tsx
