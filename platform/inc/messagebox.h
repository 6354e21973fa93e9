// The system's message box: its style words, its answers, and the box itself.
#pragma once

#include "platform/inc/types.h"
#include <cstdint>

namespace Platform {

constexpr std::uint32_t MbOk = 0;                  // MB_OK
constexpr std::uint32_t MbOkCancel = 1;            // MB_OKCANCEL
constexpr std::uint32_t MbAbortRetryIgnore = 2;    // MB_ABORTRETRYIGNORE
constexpr std::uint32_t MbYesNoCancel = 3;         // MB_YESNOCANCEL
constexpr std::uint32_t MbYesNo = 4;               // MB_YESNO
constexpr std::uint32_t MbRetryCancel = 5;         // MB_RETRYCANCEL
constexpr std::uint32_t MbTypeMask = 0xF;          // MB_TYPEMASK
constexpr std::uint32_t MbIconHand = 0x10;         // MB_ICONHAND
constexpr std::uint32_t MbIconQuestion = 0x20;     // MB_ICONQUESTION
constexpr std::uint32_t MbIconExclamation = 0x30;  // MB_ICONEXCLAMATION
constexpr std::uint32_t MbIconInformation = 0x40;  // MB_ICONINFORMATION
constexpr std::uint32_t MbUserIcon = 0x80;         // MB_USERICON
constexpr std::uint32_t MbIconMask = 0xF0;         // MB_ICONMASK
constexpr std::uint32_t MbDefButton2 = 0x100;      // MB_DEFBUTTON2
constexpr std::uint32_t MbDefButton3 = 0x200;      // MB_DEFBUTTON3
constexpr std::uint32_t MbSystemModal = 0x1000;    // MB_SYSTEMMODAL
constexpr std::uint32_t MbTaskModal = 0x2000;      // MB_TASKMODAL
constexpr std::uint32_t MbSetForeground = 0x10000; // MB_SETFOREGROUND
constexpr std::uint32_t MbTopmost = 0x40000;       // MB_TOPMOST

constexpr std::int32_t IdOk = 1;     // IDOK
constexpr std::int32_t IdCancel = 2; // IDCANCEL
constexpr std::int32_t IdAbort = 3;  // IDABORT
constexpr std::int32_t IdRetry = 4;  // IDRETRY
constexpr std::int32_t IdIgnore = 5; // IDIGNORE
constexpr std::int32_t IdYes = 6;    // IDYES
constexpr std::int32_t IdNo = 7;     // IDNO

/// Shows a text and waits for a button. Where no box can be had (on Linux, which has none, and on Windows when memory
/// is gone) title and text go to standard error and to the debugger, and the answer is 0. Takes no memory of ours and
/// raises nothing: it is what exhausted memory is told with, at any time of a process's life.
std::int32_t MessageBox(Window owner, const char16_t* text, const char16_t* title, std::uint32_t style) noexcept;
/// The same with the named icon of a module where the style has MbUserIcon; null for both otherwise.
std::int32_t MessageBoxIndirect(Window owner, const char16_t* text, const char16_t* title, std::uint32_t style,
                                Module module, const char16_t* iconName);

/// The window of `owner`'s that was active last; `owner` itself if it has no popup. Linux has no window that is
/// visible.
Window GetLastActivePopup(Window owner);
bool IsWindowVisible(Window window);

} // namespace Platform
