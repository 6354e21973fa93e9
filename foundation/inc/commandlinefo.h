// The splitter of the command line. It has quoting rules of its own and expands response files.
#pragma once

#include "foundation/inc/array.h"
#include "foundation/inc/unicodestring.h"

namespace Tsx {

/// Appends the tokens of a line to `target`. White space separates; quotes keep it; inside them a doubled quote is one
/// quote; a backslash is a plain character. `@file` stands for the tokens of that text file, `@@x` for the token `@x`.
/// Raises CFileException, with `target` as it was.
///
///   a  b             a, b
///   "a  b" -s:"x y"  a  b, -s:x y
///   "a""b"  a""b     a"b, ab
void SplitCommandLine(CArray<CUnicodeString>& target, const CUnicodeString& line);

} // namespace Tsx
