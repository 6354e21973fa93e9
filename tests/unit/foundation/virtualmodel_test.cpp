// Random operations on the file system in memory and on a model of it.
#include "tests/support/text.h"
#include "tests/support/virtualmodel.h"
#include <random>

TEST(VirtualModel, RandomOperationsGiveTheSame) {
    constexpr int steps = 35'000;
    for (const std::uint32_t seed : {1U, 2U, 3U, 4U, 5U, 6U}) {
        std::mt19937 random(seed);
        CVirtualModel model([&](std::uint32_t bound) { return static_cast<std::uint32_t>(random() % bound); });
        for (int step = 0; step < steps; ++step) {
            std::string done;
            const std::string wrong = model.Step(done);
            ASSERT_EQ(wrong, "") << "seed " << seed << ", step " << step << ", " << done;
        }
        EXPECT_EQ(model.CompareContents(), "") << "seed " << seed;
    }
}
