// The message log: what people were shown, kept for support where the machine asks for it.
#pragma once

namespace Tsx {

/// Adds one line. Never fails.
void WriteMessageLogLine(const char16_t* text);

} // namespace Tsx
