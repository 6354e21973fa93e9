// The look inside a hash table that its tests share: slots by their words, and a check of the whole structure that
// walks it by the rules of the layout and with nothing of the table's own code.
#pragma once

#include "foundation/inc/slottable.h"
#include "platform/inc/faults.h"
#include "tests/support/text.h"
#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

/// A table of TTable whose keys are hashed by TTraits.
template <class TTable, class TTraits>
class CInspected : public TTable {
public:
    using TTable::Arena;
    using TTable::HashSize;
    using TTable::InitialHashSize;
    using TTable::ItemCount;
    using TTable::SlotCapacity;
    using TTable::SlotCount;
    using TTable::Slots;
    using TTable::TTable;

    static std::uint64_t Link(std::int32_t slot) { return static_cast<std::uint64_t>(slot) * 2 + 1; }

    /// What is wrong with the structure; empty when all is well.
    std::string Fault() const {
        if (SlotCount == 0) {
            return ItemCount == 0 && HashSize == 0 && !Slots ? "" : "leftovers in an empty table";
        }
        const std::int32_t groups = (SlotCount - HashSize) / 4;
        if (SlotCount != HashSize + groups * 4 || groups > (HashSize / 2 + 3) / 4 || SlotCapacity < SlotCount) {
            return "odd sizes";
        }
        SReached reached{std::vector<bool>(static_cast<std::size_t>(groups))};
        for (std::int32_t bucket = 0; bucket < HashSize; ++bucket) {
            if (std::string fault = ChainFault(bucket, reached); !fault.empty()) {
                return fault;
            }
        }
        if (std::find(reached.groups.begin(), reached.groups.end(), false) != reached.groups.end()) {
            return "a group that no link leads to";
        }
        return reached.items == ItemCount ? "" : "wrong count of items";
    }

private:
    struct SReached {
        std::vector<bool> groups;
        std::int32_t items = 0;
    };

    // Follows one bucket's chain to its end.
    std::string ChainFault(std::int32_t bucket, SReached& reached) const {
        for (std::int32_t slot = bucket;;) {
            const bool bucketOrGroupEnd = slot < HashSize || (slot - HashSize) % 4 == 3;
            const std::uint64_t word = Slots[slot];
            if ((word & 1) != 0) {
                const auto target = static_cast<std::int64_t>(word / 2);
                if (!bucketOrGroupEnd || target < HashSize || target >= SlotCount || (target - HashSize) % 4 != 0) {
                    return Told("stray link", slot);
                }
                const auto group = static_cast<std::size_t>((target - HashSize) / 4);
                if (reached.groups[group]) {
                    return Told("group reached twice", slot);
                }
                reached.groups[group] = true;
                slot = static_cast<std::int32_t>(target);
                continue;
            }
            if (word != 0) {
                ++reached.items;
                if (TTraits::Hash(this->GetKeyAt(slot)) % static_cast<std::uint32_t>(HashSize) !=
                    static_cast<std::uint32_t>(bucket)) {
                    return Told("key on another bucket's chain", slot);
                }
            }
            if (bucketOrGroupEnd) {
                return "";
            }
            ++slot;
        }
    }

    static std::string Told(const char* what, std::int32_t slot) {
        std::ostringstream text;
        text << what << " at slot " << slot;
        return text.str();
    }
};

/// Runs `fill` on a fresh table again and again, with the first, second ... call of an allocating function failing,
/// until none is left to fail. After each failure the structure is whole and the table takes what was refused.
template <class TTable, class TFill>
void SweepFaults(const char* function, TFill fill) {
    SKIP_WITHOUT_FAULTS();
    for (std::int32_t nth = 1;; ++nth) {
        TTable table;
        Platform::ArmFault(function, nth, 8, Platform::FaultMode::Once);
        std::int32_t refused = 0;
        for (std::int32_t i = 0; i < 200; ++i) {
            const std::int32_t before = table.GetItemCount();
            if (Raised<Tsx::CMemoryException>([&] { fill(table, i); })) {
                ++refused;
                ASSERT_EQ(table.GetItemCount(), before) << "call " << nth;
                ASSERT_EQ(table.Fault(), "") << "call " << nth;
                fill(table, i);
            }
        }
        const bool reached = Platform::FaultCallsSeen() >= nth;
        Platform::DisarmFaults();
        ASSERT_EQ(refused, reached ? 1 : 0) << "call " << nth;
        ASSERT_EQ(table.GetItemCount(), 200);
        ASSERT_EQ(table.Fault(), "");
        if (!reached) {
            EXPECT_GT(nth, 10) << "the sweep saw the slots' and the pages' allocations";
            return;
        }
    }
}
