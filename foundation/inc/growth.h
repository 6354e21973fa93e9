// How much room a growing array takes next: for array.h, roomybuffer.h and growbuffer.h.
#pragma once

#include "foundation/inc/errorsfwd.h"
#include <algorithm>
#include <cstdint>
#include <limits>

namespace Tsx {

/// The capacity that an array of `capacity` elements takes when it needs room for `needed`: the old one plus the
/// largest of half of it, `leastStep` and what is missing. Raises CMemoryException beyond 32 signed bits.
///
///   leastStep 8    0 -> 8 -> 16 -> 24 -> 36 -> 54 ...    one element at a time
///   leastStep 1    0 -> 1 -> 2 -> 3 -> 4 -> 6 -> 9 ...
inline std::int32_t GrownCapacity(std::int32_t capacity, std::int64_t needed, std::int64_t leastStep) {
    const std::int64_t grown = capacity + std::max({std::int64_t{capacity} / 2, leastStep, needed - capacity});
    if (grown > std::numeric_limits<std::int32_t>::max()) {
        GenerateMemoryException();
    }
    return static_cast<std::int32_t>(grown);
}

} // namespace Tsx
