#include "foundation/inc/map.h"

#include "tests/unit/foundation/inspectedtable.h"
#include <functional>
#include <memory>
#include <random>

using namespace Tsx;

namespace {

template <class TTraits, class TMemory = CCurrentManagerPolicy>
using CTextMap = CInspected<CMap<CUnicodeString, std::int32_t, TTraits, TMemory>, TTraits>;

template <class TMap>
std::vector<std::int32_t> ValuesOf(const TMap& map, const CUnicodeString& key) {
    std::vector<std::int32_t> values;
    for (std::int32_t at = map.GetFirstPosition(key); at != NoPosition; at = map.GetNextPosition(key, at)) {
        values.push_back(map.GetValueAt(at));
    }
    return values;
}

} // namespace

TEST(Map, TextHashIsTheSameFourCharactersAStepAsOneByOne) {
    std::mt19937 random(9);
    for (std::size_t length = 0; length < 70; ++length) {
        std::u16string text(length, u'\0');
        std::uint32_t expected = 0;
        for (char16_t& c : text) {
            c = static_cast<char16_t>(length % 2 == 0 ? random() : 0xFFFF - random() % 3);
            expected = expected * 33 + c;
        }
        ASSERT_EQ(HashText(text), expected) << "length " << length;
    }
    EXPECT_EQ(HashText(u"ab"), 97U * 33 + 98);
    EXPECT_EQ(HashTextNoCase(u"aB"), 65U * 33 + 66);
}

TEST(Map, EqualKeysOfAMultimapKeepTheirOrder) {
    CTextMap<CNoCaseStringKeyTraits> map;
    map.Add(u"Name", 1);
    map.Add(u"name", 2);
    map.Add(u"other", 3);
    map.Add(u"NAME", 4);
    EXPECT_EQ(ValuesOf(map, u"nAmE"), (std::vector<std::int32_t>{1, 2, 4}));
    EXPECT_EQ(map.Get(u"NAME"), 1);
    map.Set(u"naMe", 5);
    EXPECT_EQ(ValuesOf(map, u"name"), (std::vector<std::int32_t>{5, 2, 4})) << "the first one's value is replaced";
    map.Set(u"names", 6);
    EXPECT_EQ(map.GetItemCount(), 5);
    map.DeleteAll(map.GetKeyAt(map.GetFirstPosition(u"name"))); // the argument goes with its node
    EXPECT_EQ(map.GetItemCount(), 2);
    EXPECT_EQ(map.Find(u"name"), nullptr);
    ASSERT_TRUE(map.Find(u"Names"));

    CTextMap<CStringKeyTraits> exact;
    exact.Add(u"name", 1);
    EXPECT_FALSE(exact.Has(u"Name"));
    EXPECT_FALSE(exact.Has(u"nam"));
    EXPECT_TRUE(exact.Has(CUnicodeString(u"na") + u"me"));
}

TEST(Map, BrokenAssumptionsNameTheirPlace) {
    using TMap = CInspected<CMap<std::int32_t, std::int32_t, CNumberKeyTraits>, CNumberKeyTraits>;
    TMap map;
    const TMap& readOnly = map;
    ExpectInternalErrors("inc\\map", {{352, [&] { map.Get(1); }}, {360, [&] { readOnly.Get(1); }}});
    ExpectInternalErrors("inc\\hashtable", {{423, [&] { map.Delete(1); }}});
    map.Add(5, 0);
    map.Add(36, 0);
    map.Delete(36);
    const std::uint64_t node = std::exchange(map.Slots[31], TMap::Link(31));
    ExpectInternalErrors("inc\\map", {{673, [&] { map.Add(67, 0); }}});
    map.Slots[31] = node;
}

TEST(Map, KeysAndValuesAreDestroyedWithTheirNodes) {
    const auto value = std::make_shared<int>(1);
    {
        CMap<std::int32_t, std::shared_ptr<int>, CNumberKeyTraits> map;
        for (std::int32_t i = 0; i < 100; ++i) {
            map.Add(i % 40, value);
        }
        EXPECT_EQ(value.use_count(), 101);
        map.Delete(3);
        EXPECT_EQ(value.use_count(), 100);
        map.DeleteAll(5);
        EXPECT_EQ(value.use_count(), 97);
        map.DeleteAll();
        EXPECT_EQ(value.use_count(), 1);
        map.Add(1, value);
    }
    EXPECT_EQ(value.use_count(), 1);
}

// What a value's destructor finds when it looks at the table that is being emptied.
TEST(Map, IsEmptyBeforeItsNodesAreDestroyed) {
    struct CLooking {
        const std::function<void()>* look = nullptr;
        CLooking() = default;
        explicit CLooking(const std::function<void()>* action) : look(action) {}
        CLooking(CLooking&& other) noexcept : look(std::exchange(other.look, nullptr)) {}
        CLooking& operator=(CLooking&&) = delete;
        ~CLooking() {
            if (look) {
                (*look)();
            }
        }
    };
    CMap<std::int32_t, CLooking, CNumberKeyTraits> map;
    int looked = 0;
    const std::function<void()> look = [&] {
        ++looked;
        EXPECT_TRUE(map.IsEmpty());
        EXPECT_FALSE(map.Has(1));
    };
    for (const std::int32_t key : {1, 2, 32}) {
        map.Add(key, CLooking(&look));
    }
    map.DeleteAll();
    EXPECT_EQ(looked, 3);
}
