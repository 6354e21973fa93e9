// One command line from separate arguments.
#pragma once

#include <string>

namespace Platform {

/// Joins the arguments with blanks, quoting each one that the program's splitter would not take as it stands: in
/// quotes, with each quote character doubled. Splitting the result gives the arguments back, so that a shell's words
/// arrive whole.
std::u16string JoinArguments(int count, const char* const* arguments);

} // namespace Platform
