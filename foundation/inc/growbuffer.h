// The growth that the containers of plain elements (words, pointers) share.
#pragma once

#include "foundation/inc/errorsfwd.h"
#include <algorithm>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace Tsx {

/// Makes room for `needed` elements in a buffer of TMemory that holds `count` of them. Where there is less, the
/// capacity becomes the old one plus the largest of half of it, `leastStep` and what is missing:
///
///   leastStep 8    capacity 0 -> 8 -> 16 -> 24 -> 36 -> 54 ...    one element at a time
///   leastStep 1    capacity 0 -> 1 -> 2 -> 3 -> 4 -> 6 -> 9 ...
///
/// The new elements' contents are undefined. Raises CMemoryException and leaves everything as it was.
template <class TMemory, class TElement>
void GrowBuffer(TElement*& elements, std::int32_t count, std::int32_t& capacity, std::int64_t needed,
                std::int64_t leastStep) {
    static_assert(std::is_trivially_copyable_v<TElement>);
    if (needed <= capacity) {
        return;
    }
    const std::int64_t grown =
        capacity + std::max({std::int64_t{capacity} / 2, leastStep, needed - std::int64_t{capacity}});
    if (grown > std::numeric_limits<std::int32_t>::max()) {
        GenerateMemoryException();
    }
    auto* fresh = static_cast<TElement*>(TMemory::Alloc(grown * static_cast<std::int64_t>(sizeof(TElement))));
    std::copy_n(elements, count, fresh);
    TMemory::Free(elements);
    elements = fresh;
    capacity = static_cast<std::int32_t>(grown);
}

} // namespace Tsx
