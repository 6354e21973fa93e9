// Text files.
#pragma once

#include "foundation/inc/unicodestring.h"

namespace Tsx {

/// The whole text of a file: UTF-16 or UTF-8 after a byte-order mark, the system's ANSI code page without one. Raises
/// CFileException.
CUnicodeString ReadTextFile(const CUnicodeString& path);

} // namespace Tsx
