#include "foundation/inc/hashtable.h"

#include <algorithm>
#include <array>
#include <limits>

namespace Tsx {

namespace {

constexpr std::array<std::int32_t, 27> HashSizes = {
    31,      53,       97,       193,      389,       769,       1543,      3079,      6151,
    12289,   24593,    49157,    98317,    196613,    393241,    786433,    1572869,   3145739,
    6291469, 12582917, 25165843, 50331653, 100663319, 201326611, 402653189, 805306457, 1610612741};
static_assert(std::is_sorted(HashSizes.begin(), HashSizes.end()));

} // namespace

std::int32_t GetPrimeAbove(std::int64_t value) {
    const auto* prime = std::upper_bound(HashSizes.begin(), HashSizes.end(), value);
    TSX_ASSERT_AT(prime != HashSizes.end(), u"src\\hashtable", 88);
    return prime != HashSizes.end() ? *prime : std::numeric_limits<std::int32_t>::max();
}

} // namespace Tsx
