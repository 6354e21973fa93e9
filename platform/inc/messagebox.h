// The system's message box: its style words, its answers, and the box itself.
#pragma once

#include "platform/inc/types.h"
#include <cstdint>

namespace Platform {

constexpr std::uint32_t MbOk = 0;               // MB_OK
constexpr std::uint32_t MbOkCancel = 1;         // MB_OKCANCEL
constexpr std::uint32_t MbAbortRetryIgnore = 2; // MB_ABORTRETRYIGNORE
constexpr std::uint32_t MbYesNoCancel = 3;      // MB_YESNOCANCEL
constexpr std::uint32_t MbYesNo = 4;            // MB_YESNO
constexpr std::uint32_t MbRetryCancel = 5;      // MB_RETRYCANCEL
constexpr std::uint32_t MbIconHand = 0x10;      // MB_ICONHAND
constexpr std::uint32_t MbDefButton2 = 0x100;   // MB_DEFBUTTON2
constexpr std::uint32_t MbDefButton3 = 0x200;   // MB_DEFBUTTON3
constexpr std::uint32_t MbSystemModal = 0x1000; // MB_SYSTEMMODAL

constexpr std::int32_t IdOk = 1;     // IDOK
constexpr std::int32_t IdCancel = 2; // IDCANCEL
constexpr std::int32_t IdAbort = 3;  // IDABORT
constexpr std::int32_t IdRetry = 4;  // IDRETRY
constexpr std::int32_t IdIgnore = 5; // IDIGNORE
constexpr std::int32_t IdYes = 6;    // IDYES
constexpr std::int32_t IdNo = 7;     // IDNO

/// Shows a text and waits for a button. On Linux, which has no such box, the title and the text go to standard error,
/// and the answer is the style's first button.
std::int32_t MessageBox(Window owner, const char16_t* text, const char16_t* title, std::uint32_t style);

} // namespace Platform
