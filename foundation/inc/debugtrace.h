// Lines for the debugger's output; they reach neither the console nor a file. The files in memory, the text stream and
// the leak reports write them.
#pragma once

#include "foundation/inc/format.h"
#include "foundation/inc/roomybuffer.h"
#include <initializer_list>

namespace Tsx {

/// Formats a line into the buffer and returns it, terminated. A text of up to 511 characters takes no memory.
const char16_t* FormatLine(CRoomyBuffer& buffer, const char16_t* format,
                           std::initializer_list<CFormatArgument> arguments);

void DebugTraceList(const char16_t* format, std::initializer_list<CFormatArgument> arguments);

/// Formats a line and sends it to the debugger, unless the debug flag DebugSilenceTrace is set.
template <class... TArguments>
void DebugTrace(const char16_t* format, const TArguments&... arguments) {
    DebugTraceList(format, {CFormatArgument(arguments)...});
}

/// A hook for the traces of released programs. AS DESIGNED: it does nothing.
template <class... TArguments>
void ReleaseTrace(const char16_t* /*format*/, const TArguments&... /*arguments*/) {}

/// A text about memory for the debugger, or, as the debug flag DebugReportMemoryErrorInMessageBox asks, in a message
/// box.
void WriteDebugOutput(const char16_t* text);

/// Shows a text in a message box; cancelling it stops in the debugger.
void AskToBreak(const char16_t* text);

} // namespace Tsx
