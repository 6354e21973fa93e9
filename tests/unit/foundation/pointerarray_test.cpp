#include "foundation/inc/pointerarray.h"

#include "foundation/inc/threadobject.h"
#include "platform/inc/faults.h"
#include "tests/support/recordinghandler.h"
#include "tests/support/text.h"
#include <functional>
#include <limits>
#include <random>
#include <thread>
#include <vector>

using namespace Tsx;

namespace {

std::vector<int> destroyed;

struct CNotingDestroy {
    void operator()(int* element) const {
        destroyed.push_back(*element);
        delete element;
    }
};

using TPointers = CPointerArray<int, CNotingDestroy>;

void AppendNumbers(TPointers& array, int from, int to) {
    for (int i = from; i <= to; ++i) {
        array.Append(new int(i));
    }
}

} // namespace

TEST(PointerArray, GrowsByHalfOrEight) {
    TPointers array;
    struct Row {
        std::int32_t size, capacity;
    };
    for (const Row& row : {Row{1, 8}, {8, 8}, {9, 16}, {17, 24}, {25, 36}, {37, 54}}) {
        AppendNumbers(array, array.Size() + 1, row.size);
        EXPECT_EQ(array.Capacity(), row.capacity) << row.size;
    }
}

TEST(PointerArray, DestroysARangeInOrderAndSkipsNulls) {
    TPointers array;
    AppendNumbers(array, 0, 9);
    delete array.Exchange(4, nullptr);
    destroyed.clear();
    array.DeleteAt(2, 5);
    EXPECT_EQ(destroyed, (std::vector<int>{2, 3, 5, 6}));
    ASSERT_EQ(array.Size(), 5);
    EXPECT_EQ(*array[1], 1);
    EXPECT_EQ(*array[2], 7);
    array.DeleteAt(5, 0);
    EXPECT_EQ(array.Size(), 5) << "nothing at the end is a range too";
    array.InsertAt(2, new int(60));
    EXPECT_EQ(*array[2], 60);
    EXPECT_EQ(*array[3], 7);
    destroyed.clear();
    array.FreeBuffer();
    EXPECT_EQ(destroyed, (std::vector<int>{0, 1, 60, 7, 8, 9}));
    EXPECT_EQ(array.Capacity(), 0);
}

TEST(PointerArray, ADestructorFindsNullInItsPlace) {
    struct CLooking {
        const std::function<void()>* look;
        ~CLooking() { (*look)(); }
    };
    CPointerArray<CLooking> array;
    std::vector<std::pair<bool, bool>> seen;
    const std::function<void()> look = [&] { seen.emplace_back(array[0] == nullptr, array[1] == nullptr); };
    array.Append(new CLooking{&look});
    array.Append(new CLooking{&look});
    array.DeleteAt(0, 2);
    EXPECT_EQ(seen, (std::vector<std::pair<bool, bool>>{{true, false}, {true, true}}));
}

TEST(PointerArray, EachBrokenRangeHasItsLine) {
    TPointers array;
    AppendNumbers(array, 0, 4);
    struct Row {
        std::int32_t index, count, line;
    };
    for (const Row& row : {Row{-1, 1, 466},
                           {6, 0, 467},
                           {0, -1, 468},
                           {5, std::numeric_limits<std::int32_t>::min(), 468},
                           {0, 6, 469},
                           {5, 1, 469}}) {
        ExpectInternalErrors("inc\\pointerarray", {{row.line, [&] { array.DeleteAt(row.index, row.count); }}});
    }
    CRecordingHandler handler;
    const CMessageHandlerScope scope(&handler);
    std::thread([&] {
        ThreadErrorMode.Get()->NoExceptions = true;
        int element = 5;
        array.InsertAt(6, &element);
        EXPECT_EQ(array.Exchange(5, &element), &element) << "stays the caller's";
        EXPECT_EQ(array[-1], nullptr);
        array.DeleteAt(0, 6);
    }).join();
    EXPECT_EQ(handler.texts.size(), 4U);
    EXPECT_EQ(array.Size(), 5);
}

TEST(PointerArray, BehavesAsAVectorUnderRandomSteps) {
    constexpr unsigned seed = 5;
    std::mt19937 random(seed);
    TPointers array;
    std::vector<int> model;
    for (int step = 0; step < 200000; ++step) {
        const std::size_t at = random() % (model.size() + 1);
        if (random() % 3 != 0 && model.size() < 60) {
            array.InsertAt(static_cast<std::int32_t>(at), new int(step));
            model.insert(model.begin() + static_cast<std::ptrdiff_t>(at), step);
        } else {
            const std::size_t count = std::min(model.size() - at, std::size_t{random() % 4});
            destroyed.clear();
            array.DeleteAt(static_cast<std::int32_t>(at), static_cast<std::int32_t>(count));
            const auto first = model.begin() + static_cast<std::ptrdiff_t>(at);
            const auto last = first + static_cast<std::ptrdiff_t>(count);
            ASSERT_EQ(destroyed, std::vector<int>(first, last)) << "seed " << seed << " step " << step;
            model.erase(first, last);
        }
        ASSERT_TRUE(std::equal(array.begin(), array.end(), model.begin(), model.end(),
                               [](const int* element, int number) { return *element == number; }))
            << "seed " << seed << " step " << step;
    }
}

TEST(PointerArray, ExhaustedMemoryLeavesTheArrayAndTheElement) {
    SKIP_WITHOUT_FAULTS();
    TPointers array;
    AppendNumbers(array, 1, 8);
    auto ninth = std::make_unique<int>(9);
    Platform::ArmFault("AllocateRuntimeHeap", 1, 8, Platform::FaultMode::Once);
    EXPECT_TRUE(Raised<CMemoryException>([&] { array.InsertAt(0, ninth.get()); }));
    Platform::DisarmFaults();
    EXPECT_EQ(array.Size(), 8);
    EXPECT_EQ(*array[0], 1);
    array.Append(ninth.release());
    EXPECT_EQ(*array[8], 9);
}
