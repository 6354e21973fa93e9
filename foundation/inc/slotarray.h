// The slots of the hash tables: where a chain begins, how it goes on, and how it gets longer. Knows words, not keys.
#pragma once

#include "foundation/inc/array.h"
#include "foundation/inc/assertion.h"
#include "foundation/inc/growbuffer.h"
#include <algorithm>
#include <bit>
#include <cstdint>
#include <utility>

namespace Tsx {

/// Positions are slot indices; this one stands for none.
constexpr std::int32_t NoPosition = -1;

/// The first bucket count of the list of primes that is greater than `value`:
///
///   below 31                  31
///   31 to 52                  53
///   ...                       97, 193, 389 ... 805306457, each about twice the one before
///   805306457 to 1610612740   1610612741
///   from 1610612741 on        an internal error, and 0x7FFFFFFF where that does not throw
std::int32_t GetPrimeAbove(std::int64_t value);

/// Remainders of hashes by one bucket count: two multiplications instead of a division, with the same result for every
/// hash, since the reciprocal has twice the bits of either. Look-ups take 1.1 times as long with the division.
class CHashDivisor {
public:
    CHashDivisor() = default;
    explicit CHashDivisor(std::int32_t size)
        : divisor(static_cast<std::uint32_t>(size)), reciprocal(~std::uint64_t{0} / divisor + 1) {}

    std::int32_t Remainder(std::uint32_t hash) const {
        __extension__ using TDouble = unsigned __int128;
        const std::uint64_t fraction = reciprocal * hash; // of the quotient, in 2^-64ths
        return static_cast<std::int32_t>((TDouble{fraction} * divisor) >> 64);
    }

private:
    std::uint64_t divisor = 1;
    std::uint64_t reciprocal = 0; // 2^64 / divisor, rounded up
};

/// A slot word is 0 when empty, even when it points to a node, and odd when it links to a group.
inline bool IsNodeWord(std::uint64_t word) {
    return word != 0 && (word & 1) == 0;
}
inline bool IsLinkWord(std::uint64_t word) {
    return (word & 1) != 0;
}
inline void* NodeAddress(std::uint64_t word) {
    return std::bit_cast<void*>(word);
}
inline std::int32_t LinkedSlot(std::uint64_t link) {
    return static_cast<std::int32_t>(link >> 1);
}
inline std::uint64_t LinkTo(std::int32_t slot) {
    return (static_cast<std::uint64_t>(slot) << 1) | 1;
}

/// The array of slots of a table with `size` buckets:
///
///   0 ... size - 1    the buckets, one direct slot each
///   from size on      groups of four slots; the last slot of a full group may link to the next group of its chain
///
/// A bucket that takes a second node becomes a link to a group, and its node moves to the head of that group. An empty
/// slot does not end a chain, since removal leaves holes.
///
/// Once a chain is long, a table also has CTails: for each bucket the slot at which the latest search for a free one
/// ended, 0 where none has. No hole lies before it on its chain as long as no node is removed, so that the next search
/// starts there. Without that a fill is quadratic in the number of values under one key.
template <class TMemory>
class CSlotArray {
public:
    using CTails = CArray<std::int32_t, TMemory>;

    CSlotArray() = default;
    ~CSlotArray() { Release(); }
    CSlotArray(const CSlotArray&) = delete;
    CSlotArray& operator=(const CSlotArray&) = delete;

    /// Gives an array that has no slots that many empty ones.
    void SetEmptySlots(std::int32_t count) {
        GrowBuffer<TMemory>(Slots, 0, SlotCapacity, count, LeastStep);
        std::fill_n(Slots, count, 0);
        SlotCount = count;
    }

    void Release() noexcept {
        TMemory::Free(Slots);
        SlotCount = 0;
        Slots = nullptr;
        SlotCapacity = 0;
    }

    void Swap(CSlotArray& other) noexcept {
        std::swap(SlotCount, other.SlotCount);
        std::swap(Slots, other.Slots);
        std::swap(SlotCapacity, other.SlotCapacity);
    }

    /// The first slot of a bucket's chain.
    std::int32_t GetFirstSlot(std::int32_t bucket) const {
        const std::uint64_t word = Slots[bucket];
        return IsLinkWord(word) ? LinkedSlot(word) : bucket;
    }

    /// The next slot of the chain, or NoPosition.
    std::int32_t GetNextSlot(std::int32_t slot, std::int32_t size) const {
        if (slot < size || (slot - size + 1) % GroupSize == 0) {
            return NoPosition;
        }
        const std::uint64_t word = Slots[slot + 1];
        return IsLinkWord(word) ? LinkedSlot(word) : slot + 1;
    }

    /// A free slot on the bucket's chain, which gets longer where it is full; NoPosition when the array may not get
    /// longer. A link as a slot of a chain, which the walk follows instead of seeing it, is reported through
    /// TPlace::FailLink. Raises CMemoryException and leaves the array as it was.
    template <class TPlace>
    std::int32_t FindFreeSlot(std::int32_t bucket, std::int32_t size, CTails& tails) {
        return Slots[bucket] == 0 ? bucket : FindOnChain<TPlace>(bucket, size, tails);
    }

    static constexpr std::int32_t GroupSize = 4;

    std::int32_t SlotCount = 0; // in use: the buckets and all groups
    std::uint64_t* Slots = nullptr;
    std::int32_t SlotCapacity = 0;

private:
    static constexpr std::int64_t LeastStep = 8;
    static constexpr std::int32_t LongChain = 32; // nodes

    template <class TPlace>
    [[gnu::noinline]] std::int32_t FindOnChain(std::int32_t bucket, std::int32_t size, CTails& tails) {
        const std::int32_t tail = tails.IsEmpty() ? 0 : tails[bucket];
        std::int32_t slot = tail != 0 ? tail : GetFirstSlot(bucket);
        std::int32_t lastNode = NoPosition;
        std::int32_t walked = 0;
        for (; slot != NoPosition && Slots[slot] != 0; slot = GetNextSlot(slot, size), ++walked) {
            if (IsLinkWord(Slots[slot])) {
                TPlace::FailLink();
            } else {
                lastNode = slot;
            }
        }
        if (walked > LongChain && tails.IsEmpty()) {
            tails.SetSize(size);
        }
        if (slot == NoPosition) {
            slot = lastNode == NoPosition || !MayAddGroup(size) ? NoPosition : AddGroup(lastNode);
        }
        if (slot != NoPosition && !tails.IsEmpty()) {
            tails[bucket] = slot;
        }
        return slot;
    }

    /// Groups may take at most half as many slots as there are buckets, rounded up to whole groups.
    bool MayAddGroup(std::int32_t size) const {
        const std::int64_t half = size / 2;
        const std::int64_t most = size + (half + GroupSize - 1) / GroupSize * GroupSize;
        return most >= std::int64_t{SlotCount} + GroupSize;
    }

    /// Puts a group behind the slots; the node of `slot` moves to its head and a link to it takes the node's place.
    /// Returns the slot behind the head.
    [[gnu::noinline]] std::int32_t AddGroup(std::int32_t slot) {
        const std::int32_t head = SlotCount;
        GrowBuffer<TMemory>(Slots, SlotCount, SlotCapacity, std::int64_t{SlotCount} + GroupSize, LeastStep);
        std::fill_n(Slots + head, GroupSize, 0);
        SlotCount += GroupSize;
        Slots[head] = std::exchange(Slots[slot], LinkTo(head));
        return head + 1;
    }
};

} // namespace Tsx
