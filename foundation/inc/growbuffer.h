// The growing buffer of bit sets and of the slots of hash tables.
#pragma once

#include "foundation/inc/growth.h"
#include <type_traits>

namespace Tsx {

/// Makes room for `needed` elements in a buffer of TMemory that holds `count` of them, by the rule of GrownCapacity.
/// The new elements' contents are undefined. Raises CMemoryException and leaves everything as it was.
template <class TMemory, class TElement>
void GrowBuffer(TElement*& elements, std::int32_t count, std::int32_t& capacity, std::int64_t needed,
                std::int64_t leastStep) {
    static_assert(std::is_trivially_copyable_v<TElement>);
    if (needed <= capacity) {
        return;
    }
    const std::int32_t grown = GrownCapacity(capacity, needed, leastStep);
    constexpr std::int64_t elementSize =
        sizeof(TElement); // NOLINT(bugprone-sizeof-expression): an element may be a pointer
    auto* fresh = static_cast<TElement*>(TMemory::Alloc(grown * elementSize));
    std::copy_n(elements, count, fresh);
    TMemory::Free(elements);
    elements = fresh;
    capacity = grown;
}

} // namespace Tsx
