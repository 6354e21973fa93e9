// Sorting of string arrays.
#pragma once

#include "foundation/inc/array.h"
#include "foundation/inc/unicodestring.h"

namespace Tsx {

/// Ascending order of the 16-bit character codes, not of a locale. Nothing is allocated.
void SortStrings(CArray<CUnicodeString>& strings);
/// The same, and drops what stands there twice.
void SortUniqueStrings(CArray<CUnicodeString>& strings);

} // namespace Tsx
