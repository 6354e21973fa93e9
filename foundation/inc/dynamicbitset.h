// A set of small numbers, one bit each.
#pragma once

#include "foundation/inc/allocationpolicy.h"
#include "foundation/inc/assertion.h"
#include "foundation/inc/growbuffer.h"
#include <algorithm>
#include <cstdint>
#include <utility>

namespace Tsx {

/// Bit i is bit (i mod 32) of word (i / 32). A bit beyond the stored words is clear; setting it stores words up to its
/// own. A negative bit is an assertion. A failed allocation raises CMemoryException and leaves the set as it was.
template <class TMemory = CCurrentManagerPolicy>
class CBasicDynamicBitSet {
public:
    CBasicDynamicBitSet() = default;
    CBasicDynamicBitSet(CBasicDynamicBitSet&& other) noexcept { Swap(other); }
    ~CBasicDynamicBitSet() { TMemory::Free(words); }
    CBasicDynamicBitSet(const CBasicDynamicBitSet&) = delete;
    CBasicDynamicBitSet& operator=(const CBasicDynamicBitSet&) = delete;
    CBasicDynamicBitSet& operator=(CBasicDynamicBitSet&& other) noexcept {
        CBasicDynamicBitSet taken(std::move(other));
        Swap(taken);
        return *this;
    }

    std::int32_t WordCount() const { return count; }
    std::int32_t Capacity() const { return capacity; }

    bool Has(std::int32_t bit) const {
        return CheckBit(bit) && bit / WordBits < count && (words[bit / WordBits] & MaskOf(bit)) != 0;
    }

    void Set(std::int32_t bit) {
        if (!CheckBit(bit)) {
            return;
        }
        if (bit / WordBits >= count) {
            Grow(bit / WordBits + 1);
        }
        words[bit / WordBits] |= MaskOf(bit);
    }

    void Clear(std::int32_t bit) {
        if (CheckBit(bit) && bit / WordBits < count) {
            words[bit / WordBits] &= ~MaskOf(bit);
        }
    }

    /// Stores more words, with all their bits clear. The capacity grows by half of it, one word, or what is missing,
    /// whichever is most. A count that isn't larger than the present one is an internal error.
    void Grow(std::int32_t wordCount) {
        TSX_ASSERT_AT(wordCount > count, u"inc\\dynamicbitset", 496);
        if (wordCount > count) {
            GrowBuffer<TMemory>(words, count, capacity, wordCount, 1);
            std::fill(words + count, words + wordCount, 0U);
            count = wordCount;
        }
    }

    void Swap(CBasicDynamicBitSet& other) noexcept {
        std::swap(count, other.count);
        std::swap(words, other.words);
        std::swap(capacity, other.capacity);
    }

private:
    static constexpr std::int32_t WordBits = 32;

    std::int32_t count = 0;
    std::uint32_t* words = nullptr;
    std::int32_t capacity = 0;

    static std::uint32_t MaskOf(std::int32_t bit) { return std::uint32_t{1} << (bit % WordBits); }
    static bool CheckBit(std::int32_t bit) {
        TSX_ASSERT(bit >= 0, u"inc\\dynamicbitset");
        return bit >= 0;
    }
};

using CDynamicBitSet = CBasicDynamicBitSet<>;

} // namespace Tsx
