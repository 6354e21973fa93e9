// UTF-8, the narrow text of this system, and UTF-16, the text of everything above. Two conversions with two purposes:
// file names keep every byte and every lone surrogate apart, so that no two names ever become one; text for people
// replaces what is malformed by U+FFFD, as Windows does.
#pragma once

#include <string>
#include <string_view>

namespace Platform {

/// A name in the file system from its wide form and back. A byte that is no UTF-8 stands as the lone surrogate 0xDC00 +
/// byte; any other lone surrogate becomes the three bytes that UTF-8 would give it.
std::string NativeName(std::u16string_view name);
std::u16string WideName(std::string_view name);

/// Text in UTF-8 from UTF-16 and back, each malformed piece as one U+FFFD.
std::string Utf8Text(std::u16string_view text);
std::u16string Utf16Text(std::string_view text);

/// Whether two names are one to Windows, which ignores the case of letters.
bool NamesEqual(std::u16string_view a, std::u16string_view b);

} // namespace Platform
