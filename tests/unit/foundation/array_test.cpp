#include "foundation/inc/array.h"

#include "foundation/inc/threadobject.h"
#include "tests/support/recordinghandler.h"
#include "tests/support/text.h"
#include <functional>
#include <thread>
#include <vector>

using namespace Tsx;

TEST(Array, GrowsByHalfOrEightOrWhatIsMissing) {
    struct Row {
        std::int32_t added, capacity;
    };
    constexpr Row oneByOne[] = {{1, 8}, {7, 8}, {1, 16}, {8, 24}, {8, 36}, {12, 54}};
    CArray<int> array;
    for (const Row& row : oneByOne) {
        for (std::int32_t i = 0; i < row.added; ++i) {
            array.Append(i);
        }
        EXPECT_EQ(array.Capacity(), row.capacity) << "at " << array.Size();
    }
    array.SetSize(137);
    EXPECT_EQ(array.Capacity(), 137) << "more than half as much again is missing";
    CArray<int> reserved;
    reserved.Reserve(3);
    EXPECT_EQ(reserved.Capacity(), 3) << "a reservation is exact";
}

namespace {

std::vector<int> destroyed;

struct CNoted {
    explicit CNoted(int value = 0) : number(value) {}
    CNoted(const CNoted&) = default;
    CNoted(CNoted&& other) noexcept : number(std::exchange(other.number, 0)) {}
    CNoted& operator=(const CNoted&) = default;
    CNoted& operator=(CNoted&& other) noexcept {
        number = std::exchange(other.number, 0);
        return *this;
    }
    ~CNoted() {
        if (number != 0) {
            destroyed.push_back(number);
        }
    }
    int number;
};

} // namespace

TEST(Array, DestroysTheLastElementFirst) {
    destroyed.clear();
    {
        CArray<CNoted> array;
        for (int i = 1; i <= 20; ++i) {
            array.Append(CNoted(i));
        }
        array.RemoveAt(0);
        EXPECT_EQ(destroyed, std::vector<int>{}); // the removed one was moved over
        destroyed.clear();
    }
    ASSERT_EQ(destroyed.size(), 19U);
    EXPECT_EQ(destroyed.front(), 20);
    EXPECT_EQ(destroyed.back(), 2);
}

TEST(Array, TakesItsOwnElementsAndItself) {
    CArray<CUnicodeString> array;
    array.Append(u"first");
    for (int i = 0; i < 30; ++i) {
        array.Append(array[0]); // the argument must survive the growth
    }
    array.AppendAll(array);
    EXPECT_EQ(array.Size(), 62);
    EXPECT_EQ(array[61], u"first");
    array.InsertAt(1, u"second");
    EXPECT_EQ(array[1], u"second");
    EXPECT_EQ(array[2], u"first");
}

TEST(Array, ACopyThatFailsLeavesWhatWasThere) {
    struct CFailing : CNoted {
        CFailing(int value, bool toFail) : CNoted(value), fails(toFail) {}
        CFailing(const CFailing& other) : CNoted(other), fails(other.fails) {
            if (fails) {
                throw number;
            }
        }
        CFailing(CFailing&&) noexcept = default;
        ~CFailing() = default;
        bool fails;
    };
    CArray<CFailing> array;
    array.Append(CFailing(1, false));
    array.Append(CFailing(2, true));
    destroyed.clear();
    EXPECT_THROW(static_cast<void>(CArray<CFailing>(array)), int);
    EXPECT_THROW(array.AppendAll(array), int);
    EXPECT_EQ(array.Size(), 2);
    EXPECT_EQ(destroyed, (std::vector<int>{2, 1, 2, 1})) << "what had been copied, with the base of what had not";
}

TEST(Array, IndexOutsideIsAnInternalError) {
    CArray<CUnicodeString> array;
    array.Append(u"only");
    const std::function<void()> calls[] = {[&] { array[-1] += u"x"; }, [&] { array[1] += u"x"; },
                                           [&] { array.InsertAt(3, u"x"); }, [&] { array.RemoveAt(1); },
                                           [&] { array.SetSize(-1); }};
    for (const auto& call : calls) {
        EXPECT_TRUE(Raised<CInternalError>(call));
    }
    CRecordingHandler handler; // a thread that must not throw tells them here, and goes on
    const CMessageHandlerScope scope(&handler);
    std::thread([&] {
        ThreadErrorMode.Get()->NoExceptions = true;
        for (const auto& call : calls) {
            call();
        }
        EXPECT_EQ(std::as_const(array)[1000], u"") << "nothing of what was written";
    }).join();
    EXPECT_EQ(handler.texts.size(), std::size(calls) + 1);
    ASSERT_EQ(array.Size(), 1);
    EXPECT_EQ(array[0], u"only");
}
