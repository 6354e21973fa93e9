// Text on the standard output, for CConsoleApplication: wide on a console, UTF-16 with a mark in a new file, bytes in
// the console's code page elsewhere.
#pragma once

#include "foundation/inc/unicodestring.h"
#include "platform/inc/types.h"

namespace Console {

/// Writes a text without changes. The form of the output is decided once for each handle, and the handle is asked for
/// at every call. For any thread; the texts of two calls do not mix. Raises CLastErrorException, or CMemoryException
/// for error 8.
void ConsoleWrite(const Tsx::CUnicodeString& text);

/// Writes raw bytes, 4096 at a time at most. Raises as ConsoleWrite does.
void WriteBytes(Platform::Handle handle, const void* bytes, std::int32_t length);

/// Gives each LF that does not follow a CR one in front of it, and writes the text.
void ConsoleWriteLines(const Tsx::CUnicodeString& text);

/// Formats, repairs the line ends and writes.
template <class... TArguments>
void ConsolePrintf(const char16_t* format, const TArguments&... arguments) {
    ConsoleWriteLines(Tsx::CUnicodeString::Format(format, arguments...));
}

} // namespace Console
