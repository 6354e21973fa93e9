// What CHashTable and CMap have in common: a slot array, an arena of nodes, and the keys' hash and equality.
#pragma once

#include "foundation/inc/nodearena.h"
#include "foundation/inc/slotarray.h"
#include <cstddef>
#include <iterator>
#include <new>
#include <utility>

namespace Tsx {

/// Steps over the nodes of a table in the order of their slots. Good until a node is added.
template <class TNode>
class CSlotIterator {
public:
    using iterator_category = std::forward_iterator_tag;
    using difference_type = std::ptrdiff_t;
    using value_type = TNode;
    using pointer = TNode*;
    using reference = TNode&;

    CSlotIterator() = default;
    CSlotIterator(const std::uint64_t* firstSlot, const std::uint64_t* endOfSlots) : slot(firstSlot), end(endOfSlots) {
        SkipToNode();
    }

    TNode& operator*() const { return *operator->(); }
    TNode* operator->() const { return static_cast<TNode*>(NodeAddress(*slot)); }
    CSlotIterator& operator++() {
        ++slot;
        SkipToNode();
        return *this;
    }
    CSlotIterator operator++(int) {
        CSlotIterator before = *this;
        ++*this;
        return before;
    }
    bool operator==(const CSlotIterator&) const = default;

private:
    const std::uint64_t* slot = nullptr;
    const std::uint64_t* end = nullptr;

    void SkipToNode() {
        while (slot != end && !IsNodeWord(*slot)) {
            ++slot;
        }
    }
};

/// TNode has a member Key and is built from the arguments of Insert. TTraits has Hash and Equal for keys, and Prefetch
/// where these two read behind a key. TMemory serves the slots and the nodes' pages. TPlace::FailLink reports a broken
/// chain.
///
/// For one thread at a time. A node stays where it is until it is removed, also when the table grows. A table takes no
/// memory before its first node, and removal of single nodes gives none back. A failed allocation raises
/// CMemoryException and leaves the items as they were.
template <class TNode, class TTraits, class TMemory, class TPlace>
class CSlotTable : protected CSlotArray<TMemory> {
    using TKey = decltype(TNode::Key);
    using TSlots = CSlotArray<TMemory>;
    static_assert(alignof(TNode) <= 8, "the arena aligns nodes to 8");

public:
    /// The first insertion makes as many buckets as the first prime of the list that is not below the number of items
    /// expected.
    explicit CSlotTable(std::int32_t expectedSize) : InitialHashSize(GetPrimeAbove(std::int64_t{expectedSize} - 1)) {}
    ~CSlotTable() { DeleteAll(); }
    CSlotTable(const CSlotTable&) = delete;
    CSlotTable& operator=(const CSlotTable&) = delete;

    std::int32_t GetItemCount() const { return ItemCount; }
    bool IsEmpty() const { return ItemCount == 0; }

    /// The first slot of the key's chain that holds an equal key, or NoPosition. A position is good until a node is
    /// added.
    std::int32_t GetFirstPosition(const TKey& key) const { return FindHashed(key, TTraits::Hash(key)); }

    /// The next such slot behind a position of the same key, or NoPosition.
    std::int32_t GetNextPosition(const TKey& key, std::int32_t position) const {
        return FindFrom(this->GetNextSlot(position, HashSize), key);
    }

    bool Has(const TKey& key) const { return GetFirstPosition(key) != NoPosition; }
    const TKey& GetKeyAt(std::int32_t position) const { return NodeAt(position).Key; }

    /// Removes the first node with an equal key; an internal error when there is none.
    void Delete(const TKey& key) {
        const std::int32_t position = GetFirstPosition(key);
        TSX_ASSERT_AT(position != NoPosition, u"inc\\hashtable", 423);
        if (position != NoPosition) {
            DeleteAt(position);
        }
    }

    /// Removes every node with an equal key.
    void DeleteAll(const TKey& key) {
        // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the argument may stand in one of the nodes
        const TKey wanted = key;
        std::int32_t position = GetFirstPosition(wanted);
        while (position != NoPosition) {
            const std::int32_t next = GetNextPosition(wanted, position);
            DeleteAt(position);
            position = next;
        }
    }

    /// Removes all nodes and releases all memory. The next first insertion makes as many buckets as the first one did.
    void DeleteAll() {
        // The table is empty and fit for use before the first destructor runs.
        TSlots slots;
        TArena arena;
        slots.Swap(*this);
        arena.Swap(Arena);
        ItemCount = 0;
        HashSize = 0;
        Tails.FreeBuffer();
        for (CSlotIterator<TNode> node = FirstNode<TNode>(slots); node != EndOfNodes<TNode>(slots);) {
            (node++)->~TNode();
        }
    }

    CSlotIterator<const TNode> begin() const { return FirstNode<const TNode>(*this); }
    CSlotIterator<const TNode> end() const { return EndOfNodes<const TNode>(*this); }

protected:
    using TArena = CNodeArena<static_cast<std::int32_t>((sizeof(TNode) + 7) / 8 * 8), TMemory>;
    using TSlots::SlotCount;
    using TSlots::Slots;

    std::int32_t ItemCount = 0;
    std::int32_t HashSize = 0; // buckets; 0 until the first insertion
    std::int32_t InitialHashSize;
    TArena Arena;
    typename TSlots::CTails Tails;
    CHashDivisor Divisor; // of HashSize

    template <class TIterated>
    static CSlotIterator<TIterated> FirstNode(const TSlots& slots) {
        return {slots.Slots, slots.Slots + slots.SlotCount};
    }
    template <class TIterated>
    static CSlotIterator<TIterated> EndOfNodes(const TSlots& slots) {
        return {slots.Slots + slots.SlotCount, slots.Slots + slots.SlotCount};
    }

    static TNode& NodeOf(std::uint64_t word) { return *static_cast<TNode*>(NodeAddress(word)); }
    TNode& NodeAt(std::int32_t position) const { return NodeOf(Slots[position]); }

    std::int32_t FindHashed(const TKey& key, std::uint32_t hash) const {
        if (SlotCount == 0) {
            return NoPosition;
        }
        const std::int32_t bucket = Divisor.Remainder(hash);
        const std::uint64_t word = Slots[bucket];
        if (!IsLinkWord(word)) {
            return word != 0 && TTraits::Equal(NodeOf(word).Key, key) ? bucket : NoPosition;
        }
        if constexpr (Prefetches) {
            PrefetchGroup(LinkedSlot(word), key);
        }
        return FindFrom(LinkedSlot(word), key);
    }

    /// Adds a node without looking for an equal key. `hash` is the key's.
    template <class... TArguments>
    TNode& Insert(std::uint32_t hash, TArguments&&... arguments) {
        const std::int32_t slot = TakeSlot(hash);
        void* room = Arena.Take();
        TNode* node = nullptr;
        try {
            node = new (room) TNode{std::forward<TArguments>(arguments)...};
        } catch (...) {
            Arena.GiveBack(room);
            throw;
        }
        Slots[slot] = std::bit_cast<std::uint64_t>(node);
        ++ItemCount;
        return *node;
    }

private:
    static constexpr bool Prefetches = requires(const TKey& key) { TTraits::Prefetch(key); };

    /// Asks for the texts of a group's keys all at once, before they are compared one by one: without that, look-ups
    /// among 100,000 texts take some 1.2 times as long. What is no node asks for the wanted key's, which is at hand,
    /// instead of taking a branch that would often be predicted wrong.
    void PrefetchGroup(std::int32_t head, const TKey& wanted) const {
        for (std::int32_t i = 0; i < TSlots::GroupSize; ++i) {
            const std::uint64_t word = Slots[head + i];
            TTraits::Prefetch(IsNodeWord(word) ? NodeOf(word).Key : wanted);
        }
    }

    /// The first slot with an equal key from a slot of its chain on.
    std::int32_t FindFrom(std::int32_t slot, const TKey& key) const {
        for (; slot != NoPosition; slot = this->GetNextSlot(slot, HashSize)) {
            if (IsNodeWord(Slots[slot]) && TTraits::Equal(NodeAt(slot).Key, key)) {
                break;
            }
        }
        return slot;
    }

    void DeleteAt(std::int32_t position) {
        TNode& node = NodeAt(position);
        Slots[position] = 0;
        --ItemCount;
        if (!Tails.IsEmpty()) {
            Tails[Divisor.Remainder(TTraits::Hash(node.Key))] = 0; // the next search must find the hole
        }
        node.~TNode();
        Arena.GiveBack(&node);
    }

    std::int32_t FindFreeSlot(std::uint32_t hash) {
        return TSlots::template FindFreeSlot<TPlace>(Divisor.Remainder(hash), HashSize, Tails);
    }

    /// A free slot for a node, after as much growth as it takes.
    std::int32_t TakeSlot(std::uint32_t hash) {
        if (SlotCount == 0) {
            TSlots::SetEmptySlots(InitialHashSize);
            SetHashSize(InitialHashSize);
        }
        const std::int32_t slot = FindFreeSlot(hash);
        return slot != NoPosition ? slot : TakeSlotInNewOrder(hash);
    }

    [[gnu::noinline]] std::int32_t TakeSlotInNewOrder(std::uint32_t hash) {
        std::int32_t slot = NoPosition;
        if (ItemCount + 1 < HashSize / 4) {
            // Few items and yet no room: they are clustered, and placing them anew may be enough.
            Rehash(HashSize);
            slot = FindFreeSlot(hash);
        }
        while (slot == NoPosition) {
            Rehash(GetPrimeAbove(HashSize));
            slot = FindFreeSlot(hash);
        }
        return slot;
    }

    void SetHashSize(std::int32_t size) {
        HashSize = size;
        Divisor = CHashDivisor(size);
    }

    /// Places all nodes anew over `size` buckets, or over more where these don't hold them.
    [[gnu::noinline]] void Rehash(std::int32_t size) {
        for (size = GetPrimeAbove(std::int64_t{size} - 1);; size = GetPrimeAbove(size)) {
            TSlots fresh;
            typename TSlots::CTails tails;
            fresh.SetEmptySlots(size);
            if (PlaceNodes(fresh, size, tails)) {
                TSlots::Swap(fresh);
                SetHashSize(size);
                Tails.Swap(tails);
                return;
            }
        }
    }

    /// In the order of their slots. False when a chain of the new array finds no room.
    ///
    /// The nodes, their keys' texts and the new buckets lie all over the memory. They are prefetched a batch at a time:
    /// one by one, a fill with 100,000 texts takes 1.6 times as long.
    bool PlaceNodes(TSlots& fresh, std::int32_t size, typename TSlots::CTails& tails) const {
        const CHashDivisor divisor(size);
        constexpr std::int32_t batchSize = 32;
        std::uint64_t words[batchSize];
        std::int32_t buckets[batchSize];
        std::int32_t next = 0;
        while (next < SlotCount) {
            std::int32_t filled = 0;
            for (; filled < batchSize && next < SlotCount; ++next) {
                // Without a branch, which would be predicted wrong at every other slot.
                words[filled] = Slots[next];
                __builtin_prefetch(NodeAddress(words[filled]));
                filled += static_cast<std::int32_t>(IsNodeWord(words[filled]));
            }
            if constexpr (Prefetches) {
                for (std::int32_t i = 0; i < filled; ++i) {
                    TTraits::Prefetch(NodeOf(words[i]).Key);
                }
            }
            for (std::int32_t i = 0; i < filled; ++i) {
                buckets[i] = divisor.Remainder(TTraits::Hash(NodeOf(words[i]).Key));
                __builtin_prefetch(fresh.Slots + buckets[i]);
            }
            for (std::int32_t i = 0; i < filled; ++i) {
                const std::int32_t slot = fresh.template FindFreeSlot<TPlace>(buckets[i], size, tails);
                if (slot == NoPosition) {
                    return false;
                }
                fresh.Slots[slot] = words[i];
            }
        }
        return true;
    }
};

} // namespace Tsx
