// The growing arrays: of values, of owned pointers, of bits.
#include "foundation/inc/array.h"

#include "foundation/inc/dynamicbitset.h"
#include "foundation/inc/pointerarray.h"
#include "tests/support/recordinghandler.h"
#include <limits>
#include <memory>
#include <random>
#include <tuple>
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

} // namespace

TEST(Array, BehavesAsAVectorUnderRandomSteps) {
    std::mt19937 random(5);
    CArray<std::shared_ptr<int>> array;
    std::vector<std::shared_ptr<int>> model;
    for (int step = 0; step < 30'000; ++step) {
        const std::size_t at = random() % (model.size() + 1);
        const auto index = static_cast<std::int32_t>(at);
        const unsigned choice = random() % 8;
        if (choice == 0) {
            const auto size = static_cast<std::size_t>(random() % 40);
            array.SetSize(static_cast<std::int32_t>(size));
            model.resize(size);
        } else if (choice < 4 && at < model.size()) {
            array.Append(array[index]); // one of its own must survive the growth
            model.push_back(std::shared_ptr<int>(model[at]));
            array.RemoveAt(index);
            model.erase(model.begin() + index);
        } else {
            array.InsertAt(index, std::make_shared<int>(step));
            model.insert(model.begin() + index, array[index]);
        }
        ASSERT_TRUE(std::equal(array.begin(), array.end(), model.begin(), model.end())) << "step " << step;
    }
    array.AppendAll(CArray<std::shared_ptr<int>>(array));
    array.AppendAll(array);
    EXPECT_TRUE(std::equal(model.begin(), model.end(), array.end() - static_cast<std::ptrdiff_t>(model.size())));
    array.FreeBuffer();
    for (const auto& element : model) {
        EXPECT_LE(element.use_count(), 1) << "held by the model alone";
    }
}

TEST(Array, IndexOutsideIsAnInternalError) {
    CArray<CUnicodeString> array;
    array.Append(u"only");
    ExpectRefused({[&] { array[-1] += u"x"; }, [&] { array[1] += u"x"; }, [&] { array.InsertAt(3, u"x"); },
                   [&] { array.RemoveAt(1); }, [&] { array.SetSize(-1); }});
    EXPECT_EQ(ShownInstead([&] { EXPECT_EQ(std::as_const(array)[1000], u"") << "nothing of what was written"; }), 1U);
    EXPECT_EQ(array.Size(), 1);
}

TEST(PointerArray, OwnsItsElements) {
    TPointers array;
    for (int i = 0; i < 10; ++i) {
        array.InsertAt(i, new int(i));
    }
    delete array.Exchange(4, nullptr);
    destroyed.clear();
    array.DeleteAt(2, 5);
    TPointers other;
    other.Append(new int(20));
    other = std::move(array);
    EXPECT_EQ(*other[4], 9);
    EXPECT_EQ(std::distance(other.begin(), other.end()), 5);
    other.FreeBuffer();
    EXPECT_EQ(destroyed, (std::vector<int>{2, 3, 5, 6, 20, 0, 1, 7, 8, 9}));
    EXPECT_EQ(other.Capacity(), 0);
}

TEST(PointerArray, EachBrokenRangeHasItsLine) {
    TPointers array;
    for (int i = 0; i < 5; ++i) {
        array.Append(new int(i));
    }
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    for (const auto& [index, count, line] :
         {std::tuple(-1, 1, 466), {6, 0, 467}, {0, -1, 468}, {5, least, 468}, {0, 6, 469}, {5, 1, 469}}) {
        ExpectInternalErrors("inc\\pointerarray",
                             {{line, [&, at = index, many = count] { array.DeleteAt(at, many); }}});
    }
    int element = 5;
    EXPECT_EQ(ShownInstead([&] { EXPECT_EQ(array.Exchange(5, &element), &element) << "stays the caller's"; }), 1U);
    EXPECT_EQ(ShownInstead([&] { array.DeleteAt(0, 6); }), 1U);
    EXPECT_EQ(array.Size(), 5);
}

TEST(DynamicBitSet, BehavesAsAVectorOfBitsUnderRandomSteps) {
    std::mt19937 random(31);
    CDynamicBitSet set;
    std::vector<bool> model(2000);
    for (int step = 0; step < 300'000; ++step) {
        // The range grows with the steps, so that growth finds bits of all patterns in place.
        const std::size_t bit = random() % (10 + static_cast<std::size_t>(step) / 160);
        model[bit] = random() % 2 == 0;
        if (model[bit]) {
            set.Set(static_cast<std::int32_t>(bit));
        } else {
            set.Clear(static_cast<std::int32_t>(bit));
        }
        const std::size_t other = random() % model.size();
        ASSERT_EQ(set.Has(static_cast<std::int32_t>(other)), model[other]) << "step " << step;
    }
    CDynamicBitSet grown;
    for (const auto& [bit, words, capacity] : {std::tuple(31, 1, 1), {32, 2, 2}, {3200, 101, 101}, {3232, 102, 151}}) {
        grown.Set(bit);
        EXPECT_EQ(std::pair(grown.WordCount(), grown.Capacity()), std::pair(words, capacity)) << bit;
    }
    grown.Clear(1'000'000);
    EXPECT_EQ(InternalErrorOf([&] { grown.Grow(102); }), "inc\\dynamicbitset 496");
    EXPECT_TRUE(Raised<CInternalError>([&] { grown.Set(-1); }));
    CDynamicBitSet moved;
    moved = std::move(grown);
    EXPECT_TRUE(moved.WordCount() == 102 && moved.Has(3232));
}
