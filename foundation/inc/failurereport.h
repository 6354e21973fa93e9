// What stands behind the raising functions of errors.h: whether a failure is thrown or shown, how an internal failure
// is put into words, and where a developer wants to stop. Used by the sources that raise, by the start and the stop,
// and by tests; whoever only raises or catches needs none of it.
#pragma once

#include "foundation/inc/unicodestring.h"
#include <atomic>

namespace Tsx {

/// Whether failures may be thrown at all; the calling thread's own mode decides beside it. Start and stop of the
/// foundation set it for their duration.
extern std::atomic<bool> ExceptionsEnabled;

/// What a thread that must not throw shows. A kind that does not exist is an internal error of its own.
CUnicodeString ComposeInternalErrorText(std::uint32_t kind, const char16_t* comment, const char16_t* expression,
                                        const char16_t* file, std::uint32_t line, std::uint32_t code);

/// Shows an internal failure without any exception and marks the thread. A second one inside the first ends the
/// process.
void ReportInternalFailure(const CUnicodeString& text);

/// Where a developer wants to stop at a failure.
enum TStopMode : std::uint32_t { SM_NotRead = 0, SM_Never = 1, SM_InDebugger = 2, SM_Always = 3 };

/// The user's settings "AssertStopMode" and "ErrorStopMode" ("Always", "Debug", "Never"), each a TStopMode, read once.
/// Any thread.
std::uint32_t GetAssertStopMode();
std::uint32_t GetErrorStopMode();

} // namespace Tsx
