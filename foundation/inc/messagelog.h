// The message log: a file beside the program that keeps what people were shown, for support. The message handlers, the
// start and the stop write it.
#pragma once

namespace Tsx {

/// Appends a line to "TessarixLog.txt" if the machine's setting "WriteMessageLog" says so, which is read for each line:
///
///   12:34:56 ProcessID:1234 some text
///
/// in bytes of the ANSI code page, with CR LF. A null text is empty. Never fails: a line that cannot be written is
/// lost.
void WriteMessageLogLine(const char16_t* text);

} // namespace Tsx
