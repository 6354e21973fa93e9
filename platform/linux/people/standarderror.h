// Standard error: where texts go that have no other place. Used by the message box and the debugger's output.
#pragma once

#include <initializer_list>
#include <string_view>

namespace Platform {

/// Writes the texts one behind the other, in UTF-8, malformed pieces as U+FFFD. Takes no memory and raises nothing;
/// what cannot be written is lost. A text of up to 1 KiB goes out in one write.
void WriteToStandardError(std::initializer_list<std::u16string_view> texts) noexcept;

} // namespace Platform
