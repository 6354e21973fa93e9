// The one search of the native file system that others of its sources need.
#pragma once

#include "foundation/inc/unicodestring.h"

namespace Tsx {

/// Whether a search for the path finds anything. Keeps the system from asking for a medium in a drive that has none.
/// The error mode is the process's: two threads may undo each other's. Raises CMemoryException where exhausted memory
/// leaves the question open.
bool ExistsQuietly(const CUnicodeString& path);

} // namespace Tsx
