#include "foundation/inc/hashtable.h"

#include "tests/support/recordinghandler.h"
#include "tests/unit/foundation/inspectedtable.h"
#include <limits>
#include <random>
#include <unordered_set>

using namespace Tsx;

namespace {

template <class TMemory = CCurrentManagerPolicy>
using CNumbersOn = CInspected<CHashTable<std::int32_t, CNumberKeyTraits, TMemory>, CNumberKeyTraits>;
using CNumbers = CNumbersOn<>;

/// 0 for an empty slot, the key for a node, and minus the linked slot for a link.
std::vector<std::int32_t> Shown(const CNumbers& table, std::initializer_list<std::int32_t> slots) {
    std::vector<std::int32_t> shown;
    for (const std::int32_t slot : slots) {
        const std::uint64_t word = table.Slots[slot];
        shown.push_back(word == 0 ? 0 : word % 2 == 1 ? -static_cast<std::int32_t>(word / 2) : table.GetKeyAt(slot));
    }
    return shown;
}
using TShown = std::vector<std::int32_t>;

} // namespace

TEST(HashTable, BucketCountsComeFromTheListOfPrimes) {
    for (const auto& [above, prime] : {std::pair(-5, 31),
                                       {30, 31},
                                       {31, 53},
                                       {52, 53},
                                       {1542, 1543},
                                       {98317, 196613},
                                       {805306457, 1610612741},
                                       {1610612740, 1610612741}}) {
        EXPECT_EQ(GetPrimeAbove(above), prime) << above;
    }
    EXPECT_EQ(CNumbers(50).InitialHashSize, 53);
    EXPECT_EQ(CNumbers(53).InitialHashSize, 53) << "a prime of the list is kept";
    EXPECT_EQ(CNumbers(std::numeric_limits<std::int32_t>::min()).InitialHashSize, 31);
    EXPECT_EQ(InternalErrorOf([] { GetPrimeAbove(1610612741); }), "src\\hashtable 88");
    EXPECT_EQ(ShownInstead([] { EXPECT_EQ(GetPrimeAbove(1610612741), 0x7FFFFFFF); }), 1U);
}

TEST(HashTable, RemaindersAreThoseOfTheDivision) {
    std::mt19937 random(4);
    for (const std::int64_t above : {30, 52, 98316, 805306456, 1610612740}) {
        const std::int32_t size = GetPrimeAbove(above);
        const CHashDivisor divisor(size);
        for (int i = 0; i < 20000; ++i) {
            const auto hash = static_cast<std::uint32_t>(i < 100 ? ~0U - static_cast<unsigned>(i) : random());
            ASSERT_EQ(divisor.Remainder(hash), static_cast<std::int64_t>(hash) % size) << hash << " by " << size;
        }
    }
}

// 5, 36, 67 ... share bucket 5 of 31.
TEST(HashTable, AnOverflowingBucketContinuesInGroupsOfFour) {
    CNumbers table;
    table.Add(5);
    EXPECT_EQ(Shown(table, {5}), TShown{5});
    table.Add(36);
    EXPECT_EQ(Shown(table, {5, 31, 32, 33, 34}), (TShown{-31, 5, 36, 0, 0})) << "the older node first";
    EXPECT_EQ(table.Slots[5], CNumbers::Link(31));
    table.Add(67);
    table.Add(98);
    EXPECT_EQ(Shown(table, {31, 32, 33, 34}), (TShown{5, 36, 67, 98}));
    table.Add(129);
    EXPECT_EQ(Shown(table, {31, 32, 33, 34, 35, 36, 37, 38}), (TShown{5, 36, 67, -35, 98, 129, 0, 0}));
    EXPECT_EQ(table.SlotCount, 39);

    table.Delete(36);
    table.Delete(5);
    EXPECT_EQ(Shown(table, {5, 31, 32, 33}), (TShown{-31, 0, 0, 67}));
    for (const std::int32_t behind : {67, 98, 129}) {
        EXPECT_TRUE(table.Has(behind)) << behind;
    }
    table.Add(160);
    table.Add(191);
    table.Add(222);
    EXPECT_EQ(Shown(table, {31, 32, 33, 36, 37}), (TShown{160, 191, 67, 129, 222})) << "holes first";
    EXPECT_EQ(table.SlotCount, 39);
    EXPECT_EQ(table.Fault(), "");
}

TEST(HashTable, AFifthGroupOfThirtyOneBucketsIsRefused) {
    CNumbers table;
    for (const std::int32_t key : {0, 31, 1, 32, 2, 33, 3, 34}) {
        table.Add(key);
    }
    EXPECT_EQ(table.SlotCount, 47);
    table.Add(4);
    CNumbers sparse;
    for (const std::int32_t key : {0, 31, 1, 32, 2, 33, 3, 34}) {
        sparse.Add(key);
    }
    table.Add(35);
    EXPECT_EQ(table.HashSize, 53) << "ten items are not sparse";
    EXPECT_EQ(table.SlotCount, 53);
    for (const std::int32_t key : {31, 1, 32, 2, 33, 3, 34}) {
        sparse.Delete(key);
    }
    sparse.Add(4);
    EXPECT_EQ(sparse.SlotCount, 47) << "removal gives nothing back";
    sparse.Add(35);
    EXPECT_EQ(sparse.HashSize, 31) << "three items are: the size stays";
    EXPECT_EQ(sparse.SlotCount, 35);
    EXPECT_EQ(Shown(sparse, {0, 4, 31, 32}), (TShown{0, -31, 4, 35}));
    EXPECT_EQ(sparse.Fault(), "");
}

TEST(HashTable, EqualKeysGrowTheTableWhereTheirChainFindsNoGroup) {
    CNumbers table;
    for (const auto& [items, hashSize] : {std::pair(13, 31), {14, 53}, {22, 53}, {23, 97}, {37, 97}, {38, 193}}) {
        while (table.ItemCount < items) {
            table.Add(7);
        }
        EXPECT_EQ(table.HashSize, hashSize) << items;
        EXPECT_EQ(table.Fault(), "");
    }
    const std::int32_t first = table.GetFirstPosition(7);
    table.Delete(7);
    table.Add(7);
    EXPECT_EQ(table.GetFirstPosition(7), first) << "a long chain's hole is found again";
    table.DeleteAll(table.GetKeyAt(table.GetFirstPosition(7)));
    EXPECT_TRUE(table.IsEmpty());
    CNumbers spread; // multiples of 53 spread over 31 buckets and 97, and fall into one of 53
    for (std::int32_t i = 0; i < 36; ++i) {
        spread.Add(53 * i);
        EXPECT_EQ(spread.HashSize, i < 35 ? 31 : 97);
    }
}

TEST(HashTable, BrokenAssumptionsNameTheirPlace) {
    CNumbers table;
    EXPECT_EQ(InternalErrorOf([&] { table.Delete(1); }), "inc\\hashtable 423");
    table.Add(5);
    table.Add(36);
    const std::uint64_t node = std::exchange(table.Slots[31], CNumbers::Link(31));
    EXPECT_EQ(InternalErrorOf([&] { table.Add(67); }), "inc\\hashtable 660");
    table.Slots[31] = node;
}

TEST(HashTable, BehavesAsAStandardMultisetUnderRandomSteps) {
    constexpr unsigned seed = 20240607;
    std::mt19937 random(seed);
    for (const std::int32_t spread : {7, 60, 4000}) {
        CNumbers table;
        std::unordered_multiset<std::int32_t> model;
        for (int step = 0; step < 150000; ++step) {
            // Few buckets of 31 and of 53, so that chains get long.
            const auto key = static_cast<std::int32_t>(random() % static_cast<unsigned>(spread)) * 31 * 53 +
                             static_cast<std::int32_t>(random() % 3);
            const auto action = random() % 1000;
            if (action < 500 && table.GetItemCount() < spread * 2) {
                table.Add(key);
                model.insert(key);
            } else if (action < 700) {
                table.Set(key);
                if (!model.contains(key)) {
                    model.insert(key);
                }
            } else if (action < 950 && model.contains(key)) {
                table.Delete(key);
                model.erase(model.find(key));
            } else if (action < 999) {
                table.DeleteAll(key);
                model.erase(key);
            } else if (random() % 30 == 0) {
                table.DeleteAll();
                model.clear();
            }
            std::size_t found = 0;
            for (std::int32_t at = table.GetFirstPosition(key); at != NoPosition; at = table.GetNextPosition(key, at)) {
                ++found;
            }
            ASSERT_EQ(found, model.count(key)) << "seed " << seed << " spread " << spread << " step " << step;
            if (table.SlotCount < 150 || step % 400 == 0) {
                ASSERT_EQ(table.Fault(), "") << "seed " << seed << " spread " << spread << " step " << step;
                ASSERT_EQ(static_cast<std::size_t>(table.ItemCount), model.size()) << "step " << step;
            }
        }
    }
}

TEST(HashTable, ExhaustedMemoryLeavesTheItems) {
    SweepFaults<CNumbersOn<CRuntimeHeapPolicy>>("AllocateRuntimeHeap",
                                                [](auto& table, std::int32_t i) { table.Add(i * 7); });
    SweepFaults<CNumbersOn<CProcessHeapPolicy>>("HeapAlloc", [](auto& table, std::int32_t i) { table.Add(i * 31); });
}
