// A file that is never seen half-written.
#pragma once

#include <string>
#include <string_view>

namespace Platform {

/// Puts a new content in the place of a file, or makes it: the file is the old one, on any failure too, or the new one
/// with the old one's access bits. A file that may not be written is refused. A link stays, and what it leads to is
/// replaced. Only one caller at a time may replace the same file. False with the last error set.
bool ReplaceFile(const std::string& path, std::string_view bytes);

} // namespace Platform
