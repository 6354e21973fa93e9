#include "foundation/inc/dynamicbitset.h"

#include "platform/inc/faults.h"
#include "tests/support/text.h"
#include <random>
#include <vector>

using namespace Tsx;

TEST(DynamicBitSet, StoresWordsUpToTheHighestBitThatWasSet) {
    struct Row {
        std::int32_t bit, words, capacity;
    };
    CDynamicBitSet set;
    for (const Row& row : {Row{0, 1, 1},
                           {31, 1, 1},
                           {32, 2, 2},
                           {64, 3, 3},
                           {96, 4, 4},
                           {128, 5, 6},
                           {160, 6, 6},
                           {192, 7, 9},
                           {3200, 101, 101},
                           {3232, 102, 151}}) {
        EXPECT_FALSE(set.Has(row.bit));
        set.Set(row.bit);
        EXPECT_TRUE(set.Has(row.bit));
        EXPECT_EQ(set.WordCount(), row.words) << row.bit;
        EXPECT_EQ(set.Capacity(), row.capacity) << row.bit;
    }
    set.Clear(1000000);
    EXPECT_FALSE(set.Has(1000000));
    EXPECT_EQ(set.WordCount(), 102);
}

TEST(DynamicBitSet, GrowingToNoMoreIsAnInternalError) {
    CDynamicBitSet set;
    set.Grow(3);
    for (const std::int32_t words : {3, 2, -1}) {
        EXPECT_EQ(InternalErrorOf([&] { set.Grow(words); }), "inc\\dynamicbitset 496") << words;
    }
    EXPECT_TRUE(Raised<CInternalError>([&] { set.Set(-1); }));
    EXPECT_EQ(set.WordCount(), 3);
}

TEST(DynamicBitSet, BehavesAsAVectorOfBitsUnderRandomSteps) {
    constexpr unsigned seed = 31;
    std::mt19937 random(seed);
    CDynamicBitSet set;
    std::vector<bool> model(2000);
    for (int step = 0; step < 300000; ++step) {
        // The range grows with the steps, so that growth finds bits of all patterns in place.
        const std::size_t bit = random() % (10 + static_cast<std::size_t>(step) / 160);
        if (random() % 2 == 0) {
            set.Set(static_cast<std::int32_t>(bit));
            model[bit] = true;
        } else {
            set.Clear(static_cast<std::int32_t>(bit));
            model[bit] = false;
        }
        const std::size_t other = random() % model.size();
        ASSERT_EQ(set.Has(static_cast<std::int32_t>(other)), model[other]) << "seed " << seed << " step " << step;
    }
}

TEST(DynamicBitSet, ExhaustedMemoryLeavesTheSet) {
    SKIP_WITHOUT_FAULTS();
    CDynamicBitSet set;
    set.Set(5);
    Platform::ArmFault("AllocateRuntimeHeap", 1, 8, Platform::FaultMode::Once);
    EXPECT_TRUE(Raised<CMemoryException>([&] { set.Set(500); }));
    Platform::DisarmFaults();
    EXPECT_EQ(set.WordCount(), 1);
    EXPECT_TRUE(set.Has(5));
    EXPECT_FALSE(set.Has(500));
}
