#include "foundation/inc/hashtable.h"

#include "foundation/inc/list.h"
#include "foundation/inc/map.h"
#include "platform/inc/faults.h"
#include "tests/support/recordinghandler.h"
#include <limits>
#include <memory>
#include <random>
#include <unordered_set>

using namespace Tsx;

namespace {

/// The look inside a table of numbers: slots by their words, and a check of the whole structure that
/// walks it by the rules of the layout and with nothing of the table's own code.
template <class TTable>
class CInspected : public TTable {
public:
    using TTable::HashSize;
    using TTable::InitialHashSize;
    using TTable::SlotCapacity;
    using TTable::SlotCount;
    using TTable::Slots;
    using TTable::TTable;

    /// What is wrong with the structure; empty when all is well.
    std::string Fault() const {
        const std::int32_t groups = (SlotCount - HashSize) / 4;
        if (SlotCount != HashSize + groups * 4 || groups > (HashSize / 2 + 3) / 4 || SlotCapacity < SlotCount) {
            return "odd sizes";
        }
        std::string fault;
        std::vector<int> reached(static_cast<std::size_t>(groups)); // how often
        std::int32_t items = 0;
        for (std::int32_t bucket = 0; bucket < HashSize; ++bucket) {
            fault += ChainFault(bucket, reached, items);
        }
        fault += std::count(reached.begin(), reached.end(), 1) == groups ? "" : "a group that no one link leads to";
        return fault + (items == this->GetItemCount() ? "" : " wrong count of items");
    }

private:
    // Follows one bucket's chain to its end.
    std::string ChainFault(std::int32_t bucket, std::vector<int>& reached, std::int32_t& items) const {
        for (std::int32_t slot = bucket;; ++slot) {
            const bool isLast = slot < HashSize || (slot - HashSize) % 4 == 3; // of the bucket, or of a group
            const std::uint64_t word = Slots[slot];
            if (word % 2 == 1) {
                const auto target = static_cast<std::int32_t>(word / 2);
                if (!isLast || target < HashSize || target >= SlotCount || (target - HashSize) % 4 != 0 ||
                    ++reached[static_cast<std::size_t>((target - HashSize) / 4)] > 1) {
                    return "stray link at slot " + std::to_string(slot) + ' ';
                }
                slot = target - 1;
                continue;
            }
            const auto buckets = static_cast<std::uint32_t>(HashSize);
            if (word != 0 &&
                CNumberKeyTraits::Hash(this->GetKeyAt(slot)) % buckets != static_cast<std::uint32_t>(bucket)) {
                return "another bucket's key at slot " + std::to_string(slot) + ' ';
            }
            items += word != 0 ? 1 : 0;
            if (isLast) {
                return "";
            }
        }
    }
};

template <class TMemory = CCurrentManagerPolicy>
using CNumbersOn = CInspected<CHashTable<std::int32_t, CNumberKeyTraits, TMemory>>;
using CNumbers = CNumbersOn<>;

void AddAll(CNumbers& table, std::initializer_list<std::int32_t> keys) {
    for (const std::int32_t key : keys) {
        table.Add(key);
    }
}

/// The values of all nodes with a key, in the order of its chain.
template <class TMap>
std::string ValuesOf(const TMap& map, const CUnicodeString& key) {
    std::string values;
    for (std::int32_t at = map.GetFirstPosition(key); at != NoPosition; at = map.GetNextPosition(key, at)) {
        values += std::to_string(map.GetValueAt(at)) + ' ';
    }
    return values;
}

/// Runs `add` on a fresh table again and again, with the first, second ... call of an allocating function failing.
/// After each failure the structure is whole and the table takes what was refused.
template <class TTable, class TAdd>
void SweepFaults(const char* function, TAdd add) {
    SKIP_WITHOUT_FAULTS();
    bool reached = true;
    for (std::int32_t nth = 1; reached; ++nth) {
        TTable table;
        const auto fill = [&] {
            for (std::int32_t i = table.GetItemCount(); i < 200; ++i) {
                add(table, i);
            }
        };
        Platform::ArmFault(function, nth, 8, Platform::FaultMode::Once);
        const bool refused = Raised<CMemoryException>(fill) != nullptr;
        reached = Platform::FaultCallsSeen() >= nth;
        Platform::DisarmFaults();
        EXPECT_EQ(refused, reached) << nth;
        EXPECT_EQ(table.Fault(), "") << nth;
        fill();
        EXPECT_EQ(std::to_string(table.GetItemCount()) + table.Fault(), "200") << nth;
        EXPECT_TRUE(reached || nth > 10) << "slots and pages";
    }
}

} // namespace

TEST(HashTable, BucketCountsComeFromTheListOfPrimes) {
    std::string primes;
    for (const std::int32_t above : {-5, 30, 31, 1542, 98317, 805306457, 1610612740}) {
        primes += std::to_string(GetPrimeAbove(above)) + ' ';
    }
    EXPECT_EQ(primes, "31 31 53 1543 196613 1610612741 1610612741 ");
    for (std::int64_t prime = 31; prime < 1610612741; prime = GetPrimeAbove(prime)) {
        for (std::int64_t divisor = 2; divisor * divisor <= prime; ++divisor) {
            ASSERT_NE(prime % divisor, 0) << prime;
        }
    }
    EXPECT_EQ(CNumbers(53).InitialHashSize, 53) << "a prime of the list is kept";
    EXPECT_EQ(CNumbers(std::numeric_limits<std::int32_t>::min()).InitialHashSize, 31);
    ExpectRefused({[] { GetPrimeAbove(1610612741); }, [] { CNumbers().Delete(1); }});
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

// 5, 36, 67 ... share bucket 5 of 31, which continues in groups of four.
TEST(HashTable, GrowsByGroupsUpToAQuarterOfTheBuckets) {
    CNumbers chain;
    for (const auto& [key, slots] : {std::pair(5, 31), {36, 35}, {67, 35}, {98, 35}, {129, 39}}) {
        chain.Add(key);
        EXPECT_EQ(chain.SlotCount, slots) << key;
    }
    chain.Set(36); // is there
    chain.Delete(36);
    chain.Delete(5);
    AddAll(chain, {160, 191, 222});
    EXPECT_EQ(chain.SlotCount, 39) << "holes first";
    EXPECT_EQ(chain.GetItemCount(), 6);
    const std::uint64_t node = std::exchange(chain.Slots[31], 2 * 31 + 1); // a link out of place
    EXPECT_TRUE(Raised<CInternalError>([&] { chain.Add(253); }));
    chain.Slots[31] = node;

    CNumbers table;
    CNumbers sparse;
    AddAll(table, {0, 31, 1, 32, 2, 33, 3, 34, 4});
    AddAll(sparse, {0, 31, 1, 32, 2, 33, 3, 34});
    EXPECT_EQ(table.SlotCount, 47);
    table.Add(35);
    EXPECT_TRUE(table.HashSize == 53 && table.SlotCount == 53) << "ten items are not sparse";
    for (const std::int32_t key : {31, 1, 32, 2, 33, 3, 34}) {
        sparse.Delete(key);
    }
    EXPECT_EQ(sparse.SlotCount, 47) << "removal gives nothing back";
    AddAll(sparse, {4, 35});
    EXPECT_TRUE(sparse.HashSize == 31 && sparse.SlotCount == 35) << "three items are: the size stays";

    CNumbers equal;
    for (const auto& [items, hashSize] : {std::pair(13, 31), {14, 53}, {22, 53}, {23, 97}, {37, 97}, {38, 193}}) {
        while (equal.GetItemCount() < items) {
            equal.Add(7);
        }
        EXPECT_EQ(equal.HashSize, hashSize) << items;
    }
}

TEST(HashTable, BehavesAsAStandardMultisetUnderRandomSteps) {
    constexpr unsigned seed = 20240607;
    std::mt19937 random(seed);
    const auto value = std::make_shared<int>(); // of all, so that it counts the nodes that live
    for (const std::int32_t spread : {7, 60, 4000}) {
        CInspected<CMap<std::int32_t, std::shared_ptr<int>, CNumberKeyTraits>> table;
        std::unordered_multiset<std::int32_t> model;
        for (int step = 0; step < 50000; ++step) {
            // Few buckets of 31 and of 53, so that chains get long.
            const auto key = static_cast<std::int32_t>(random() % static_cast<unsigned>(spread)) * 31 * 53 +
                             static_cast<std::int32_t>(random() % 3);
            const auto action = random() % 1000;
            if (action < 500 && table.GetItemCount() < spread * 2) {
                table.Add(key, value);
                model.insert(key);
            } else if (action < 700) {
                table.Set(key, value);
                model.contains(key) ? model.end() : model.insert(key);
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
                ASSERT_EQ(static_cast<std::size_t>(table.GetItemCount()), model.size());
                ASSERT_EQ(value.use_count() - 1, table.GetItemCount());
            }
        }
    }
    EXPECT_EQ(value.use_count(), 1);
}

TEST(HashTable, ExhaustedMemoryLeavesTheItems) {
    SweepFaults<CNumbersOn<CRuntimeHeapPolicy>>("AllocateRuntimeHeap", [](auto& table, int i) { table.Add(i * 7); });
    SweepFaults<CNumbersOn<CProcessHeapPolicy>>("HeapAlloc", [](auto& table, int i) { table.Add(i * 31); });
}

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
    EXPECT_EQ(HashTextNoCase(u"aB"), 65U * 33 + 66);
}

TEST(Map, EqualKeysOfAMultimapKeepTheirOrder) {
    CMap<CUnicodeString, std::int32_t, CNoCaseStringKeyTraits> map;
    map.Add(u"Name", 1);
    map.Add(u"name", 2);
    map.Add(u"other", 3);
    map.Add(u"NAME", 4);
    EXPECT_EQ(ValuesOf(map, u"nAmE"), "1 2 4 ");
    map.Set(u"naMe", 5);
    map.Set(u"names", 6);
    EXPECT_EQ(ValuesOf(map, u"name"), "5 2 4 ") << "the first one's value is replaced";
    EXPECT_EQ(map.Get(u"NAME"), 5);
    map.DeleteAll(map.GetKeyAt(map.GetFirstPosition(u"name"))); // the argument goes with its node
    EXPECT_EQ(ValuesOf(map, u"other") + ValuesOf(map, u"Names") + ValuesOf(map, u"name"), "3 6 ");
    EXPECT_TRUE(!map.Find(u"name") && map.Find(u"Names"));
    const auto& readOnly = map;
    ExpectRefused({[&] { map.Get(u"name"); }, [&] { readOnly.Get(u"name"); }});

    CMap<CUnicodeString, std::int32_t, CStringKeyTraits> exact;
    exact.Add(u"name", 1);
    EXPECT_TRUE(exact.Has(u"name") && !exact.Has(u"Name") && !exact.Has(u"nam"));
}

TEST(Map, IsEmptyBeforeItsNodesAreDestroyed) {
    CMap<std::int32_t, std::shared_ptr<void>, CNumberKeyTraits> map;
    int looked = 0;
    for (const std::int32_t key : {1, 2, 32}) {
        map.Add(key, std::shared_ptr<void>(&looked, [&](void*) { looked += map.IsEmpty() && !map.Has(1) ? 1 : 100; }));
    }
    map.DeleteAll();
    EXPECT_EQ(looked, 3);
}

namespace {

std::string deleted; // the names of those that went, in order, with "!" behind one that was in a list

struct CItem : CListNode<CItem> {
    explicit CItem(char itsName, CListNodeBase* goesToo = nullptr) : name(itsName), takesAlong(goesToo) {}
    ~CItem() override {
        deleted += name;
        deleted += List || Previous || Next ? "!" : "";
        delete takesAlong;
    }
    char name;
    CListNodeBase* takesAlong;
};

std::string Names(const CList<CItem>& list) {
    std::string names;
    for (const CItem& item : list) {
        names += item.name;
    }
    names += '|';
    for (const CItem* item = list.GetLast(); item; item = item->GetPrevious()) {
        names += item->GetList() == &list ? item->name : '?';
    }
    return names + std::to_string(list.CountNodes());
}

} // namespace

TEST(List, OwnsItsNodesWhichLeaveFromAnyPlace) {
    {
        CList<CItem> list;
        auto* c = new CItem('c');
        auto* b = new CItem('b');
        auto* d = new CItem('d');
        list.AddLast(new CItem('a', c)); // its destructor deletes another of the list
        list.AddLast(b);
        list.AddFirst(d);
        list.AddLast(c);
        EXPECT_EQ(Names(list), "dabc|cbad4");
        ExpectRefused({[&] { list.AddLast(c); }, [&] { list.AddFirst(c); }, [&] { list.AddFirst(nullptr); }});
        c->Unlink();
        c->Unlink();
        list.AddFirst(c);
        EXPECT_EQ(Names(list), "cdab|badc4");
        delete d; // from the middle
        EXPECT_EQ(Names(list), "cab|bac3");
        delete b;
        EXPECT_EQ(Names(list), "ca|ac2");
        c->Unlink();
        list.AddLast(c);
        list.AddLast(new CItem('e'));
        EXPECT_EQ(std::exchange(deleted, ""), "d!b!");
    }
    EXPECT_EQ(deleted, "ac!e") << "off the list first, but for the one that another took along";
}
