// The managers of memory, and what gets its room from them: buffers, arrays, hash tables and maps; lists.
#include "foundation/inc/alloc.h"
#include "foundation/inc/array.h"
#include "foundation/inc/debugtrace.h"
#include "foundation/inc/dynamicbitset.h"
#include "foundation/inc/hashtable.h"
#include "foundation/inc/list.h"
#include "foundation/inc/map.h"
#include "foundation/inc/pointerarray.h"
#include "foundation/inc/privateallocators.h"
#include "foundation/inc/roomybuffer.h"
#include "tests/support/recordinghandler.h"
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <set>
#include <tuple>
#include <unordered_set>
#include <vector>

using namespace Tsx;

namespace {

std::string destroyed; // the names of those that went, in order, with "!" behind one that was in a list

struct CNoting {
    int name;
    ~CNoting() { destroyed += std::to_string(name) + ' '; }
};

struct CInspected : CHashTable<std::int32_t, CNumberKeyTraits, CProcessHeapPolicy> {
    using CHashTable::CHashTable;
    using CHashTable::HashSize;
    using CHashTable::InitialHashSize;
    using CHashTable::SlotCount;
    using CHashTable::Slots;
};

/// The sizes of a table after each of the keys that it takes: buckets, and slots of groups.
std::string Grown(CInspected& table, std::initializer_list<std::int32_t> keys) {
    std::string sizes;
    for (const std::int32_t key : keys) {
        table.Add(key);
        sizes += std::to_string(table.HashSize) + '+' + std::to_string(table.SlotCount - table.HashSize) + ' ';
    }
    return sizes;
}

/// How often a table holds a key, by its chain.
template <class TTable>
std::size_t CountOf(const TTable& table, std::int32_t key) {
    std::size_t count = 0;
    for (std::int32_t at = table.GetFirstPosition(key); at != NoPosition; at = table.GetNextPosition(key, at)) {
        ++count;
    }
    return count;
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

struct CProbe : CBlockManager {
    using CBlockManager::CBlockManager;
    using CBlockManager::FreeBytes;
    using CBlockManager::FreeList;
    using CBlockManager::SparePages;
    using CBlockManager::UsedPages;
};

struct CItem : CListNode<CItem> {
    explicit CItem(char itsName, CListNodeBase* goesToo = nullptr) : name(itsName), takesAlong(goesToo) {}
    ~CItem() override {
        destroyed += name;
        destroyed += List || Previous || Next ? "!" : "";
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

TEST(BlockManager, StartsOverWhenTheLastBlockIsBack) {
    CProbe manager(32);
    std::vector<void*> blocks;
    while (!manager.UsedPages || !manager.UsedPages->next) {
        blocks.push_back(manager.AllocBlock());
        std::memset(blocks.back(), 1, 32);
    }
    EXPECT_EQ(blocks.size(), 2048U) << "the last one opened the second page";
    EXPECT_EQ(manager.GetInUseBytes(), 32 * 2048);
    EXPECT_EQ(std::set<void*>(blocks.begin(), blocks.end()).size(), blocks.size());
    manager.Free(nullptr);
    manager.Free(blocks[5]);
    EXPECT_TRUE(manager.FreeBytes == 32 && manager.AllocBlock() == blocks[5]) << "it is the first to go out again";
    for (void* block : blocks) {
        manager.Free(block);
    }
    EXPECT_TRUE(manager.GetInUseBytes() == 0 && manager.FreeBytes == 0 && !manager.FreeList && !manager.UsedPages);
    char* const spare = reinterpret_cast<char*>(manager.SparePages);
    EXPECT_EQ(manager.AllocBlock(), spare + 16) << "the first block of a spare page";
    EXPECT_TRUE(Raised<CInternalError>([&] { manager.Alloc(33); }));
}

TEST(HeapManager, KeepsItsHeapWhileABlockIsOut) {
    CHeapManager manager;
    if (Platform::FaultsAvailable()) {
        Platform::ArmFault("HeapCreate", 1, 8, Platform::FaultMode::Once);
        EXPECT_TRUE(Raised<CMemoryException>([&manager] { manager.CreateHeap(0, false); }));
        Platform::DisarmFaults();
    }
    EXPECT_FALSE(manager.HasHeap()) << "a manager without a heap is allowed";
    manager.CreateHeap(0, false);
    manager.SetLowFragmentation();
    void* block = manager.Alloc(1000);
    manager.Free(nullptr);
    manager.DestroyHeap();
    EXPECT_TRUE(manager.HasHeap() && manager.GetBlockCount() == 1 && manager.GetTotalBytes() == 1000);
    manager.Free(block);
    EXPECT_EQ(manager.GetTotalBytes(), 0);
    manager.DestroyHeap();
    EXPECT_FALSE(manager.HasHeap());
}

TEST(MemoryExceptionPool, KnowsItsExceptions) {
    auto raised = Raised<CMemoryException>([] { GenerateMemoryException(); });
    const CMemoryException* const other = raised.get() + 1;
    EXPECT_TRUE(Raised<CInternalError>([other] { ReleaseMemoryException(other); }));
    EXPECT_EQ(ShownInstead([] { const CMemoryException local; }), 1U) << "one outside the pool ends";
    const void* const slot = raised.get();
    raised.reset();
    raised = Raised<CMemoryException>([] { GenerateMemoryException(); });
    EXPECT_EQ(raised.get(), slot) << "the first free slot";
}

TEST(CurrentManager, ABlockGoesBackToWhoServedIt) {
    struct CCounting : CRuntimeHeapManager {
        int out = 0;
        void* Alloc(std::int32_t size) override {
            ++out;
            return size > 1000 ? nullptr : CRuntimeHeapManager::Alloc(size);
        }
        void Free(void* block) override {
            --out;
            CRuntimeHeapManager::Free(block);
        }
    } counting;
    const CMemoryManagerScope scope(&counting);
    void* const own = AllocateFromCurrentManager(10);
    void* switched = nullptr;
    {
        const CRuntimeHeapSwitcher switcher;
        switched = AllocateFromCurrentManager(10);
        EXPECT_EQ(counting.out, 1);
        FreeToOwnManager(own);
    }
    EXPECT_EQ(CurrentMemoryManager(), &counting);
    FreeToOwnManager(switched);
    EXPECT_EQ(counting.out, 0) << "the runtime heap's block did not come here";
    EXPECT_TRUE(Raised<CMemoryException>([] { AllocateFromCurrentManager(1000); })) << "a manager that gives null";
}

TEST(RoomyBuffer, LeavesAndReturnsToTheBuiltInRoom) {
    for (const std::size_t length : {510U, 511U, 512U, 513U, 1024U}) { // a trace of just its own size
        const std::u16string text(length, u'x');
        CRoomyBuffer line;
        EXPECT_EQ(FormatLine(line, u"%s", {CFormatArgument(text.c_str())}), text) << length;
    }
    CRoomyBuffer buffer;
    for (const auto& [size, capacity] : {std::pair(512, 512), {513, 1024}, {3000, 3000}, {513, 3000}, {100, 512}}) {
        buffer.SetSize(size);
        EXPECT_TRUE(buffer.Capacity() == capacity && buffer.IsBuiltIn() == (capacity == 512)) << size;
        buffer.Data()[0] = size == 512 ? u'x' : buffer.Data()[0];
    }
    EXPECT_EQ(buffer.Data()[0], u'x') << "taken along on both ways";
}

TEST(Array, BehavesAsAVectorUnderRandomSteps) {
    std::mt19937 random(5);
    CArray<std::shared_ptr<int>> array;
    std::vector<std::shared_ptr<int>> model;
    for (int step = 0; step < 30'000; ++step) {
        const auto index = static_cast<std::int32_t>(random() % (model.size() + 1));
        const unsigned choice = random() % 8;
        if (choice == 0) {
            array.SetSize(index);
            model.resize(static_cast<std::size_t>(index));
        } else if (choice < 4 && index < array.Size()) {
            model.push_back(array.Append(array[index])); // one of its own must survive the growth
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
    EXPECT_TRUE(std::none_of(model.begin(), model.end(), [](const auto& element) { return element.use_count() > 1; }));
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
    CPointerArray<CNoting> array;
    for (int i = 0; i < 10; ++i) {
        array.InsertAt(i, new CNoting{i});
    }
    delete array.Exchange(4, nullptr);
    destroyed.clear();
    array.DeleteAt(2, 5);
    std::string lines;
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    for (const auto& [index, count] : {std::pair(-1, 1), {6, 0}, {0, -1}, {5, least}, {0, 6}, {5, 1}}) {
        lines += InternalErrorOf([&, at = index, many = count] { array.DeleteAt(at, many); }).substr(16);
    }
    EXPECT_EQ(lines, " 466 467 468 468 469 469");
    EXPECT_EQ(ShownInstead([&] { array.DeleteAt(0, 6); }), 1U);
    CNoting kept{0};
    EXPECT_EQ(ShownInstead([&] { EXPECT_EQ(array.Exchange(5, &kept), &kept) << "stays the caller's"; }), 1U);
    CPointerArray<CNoting> other;
    other.Append(new CNoting{20});
    other = std::move(array);
    EXPECT_TRUE(other[4]->name == 9 && std::distance(other.begin(), other.end()) == 5);
    other.FreeBuffer();
    EXPECT_EQ(destroyed, "2 3 5 6 20 0 1 7 8 9 ");
    EXPECT_EQ(other.Capacity(), 0);
}

TEST(DynamicBitSet, BehavesAsAVectorOfBitsUnderRandomSteps) {
    std::mt19937 random(31);
    CDynamicBitSet set;
    std::vector<bool> model(2000);
    for (int step = 0; step < 300'000; ++step) {
        // The range grows with the steps, so that growth finds bits of all patterns in place.
        const std::size_t bit = random() % (10 + static_cast<std::size_t>(step) / 160);
        model[bit] = random() % 2 == 0;
        model[bit] ? set.Set(static_cast<std::int32_t>(bit)) : set.Clear(static_cast<std::int32_t>(bit));
        const std::size_t other = random() % model.size();
        ASSERT_EQ(set.Has(static_cast<std::int32_t>(other)), model[other]) << "step " << step;
    }
    CDynamicBitSet grown;
    for (const auto& [bit, words, capacity] : {std::tuple(31, 1, 1), {32, 2, 2}, {3200, 101, 101}, {3232, 102, 151}}) {
        grown.Set(bit);
        EXPECT_TRUE(grown.WordCount() == words && grown.Capacity() == capacity) << bit;
    }
    grown.Clear(1'000'000);
    EXPECT_EQ(InternalErrorOf([&] { grown.Grow(102); }), "inc\\dynamicbitset 496");
    EXPECT_TRUE(Raised<CInternalError>([&] { grown.Set(-1); }));
    EXPECT_TRUE(CDynamicBitSet(std::move(grown)).Has(3232));
}

TEST(HashTable, BucketCountsComeFromTheListOfPrimes) {
    std::mt19937 random(4);
    std::string primes;
    for (const std::int32_t above : {-5, 30, 31, 1542, 98317, 805306457, 1610612740}) {
        primes += std::to_string(GetPrimeAbove(above)) + ' ';
        const CHashDivisor divisor(GetPrimeAbove(above));
        for (int i = 0; i < 20000; ++i) {
            const auto hash = static_cast<std::uint32_t>(i < 100 ? ~0U - static_cast<unsigned>(i) : random());
            ASSERT_EQ(divisor.Remainder(hash), static_cast<std::int64_t>(hash) % GetPrimeAbove(above)) << hash;
        }
    }
    EXPECT_EQ(primes, "31 31 53 1543 196613 1610612741 1610612741 ");
    for (std::int64_t prime = 31; prime < 1610612741; prime = GetPrimeAbove(prime)) {
        for (std::int64_t divisor = 2; divisor * divisor <= prime; ++divisor) {
            ASSERT_NE(prime % divisor, 0) << prime;
        }
    }
    EXPECT_EQ(CInspected(53).InitialHashSize, 53) << "a prime of the list is kept";
    EXPECT_EQ(CInspected(std::numeric_limits<std::int32_t>::min()).InitialHashSize, 31);
    ExpectRefused({[] { GetPrimeAbove(1610612741); }, [] { CInspected().Delete(1); }});
}

// 5, 36, 67 ... share bucket 5 of 31, which continues in groups of four.
TEST(HashTable, GrowsByGroupsUpToAQuarterOfTheBuckets) {
    CInspected chain;
    EXPECT_EQ(Grown(chain, {5, 36, 67, 98, 129}), "31+0 31+4 31+4 31+4 31+8 ");
    chain.Set(36); // is there
    chain.Delete(36);
    chain.Delete(5);
    EXPECT_EQ(Grown(chain, {160, 191, 222}), "31+8 31+8 31+8 ") << "holes first";
    const std::uint64_t node = std::exchange(chain.Slots[31], 2 * 31 + 1); // a link out of place
    EXPECT_TRUE(Raised<CInternalError>([&] { chain.Add(253); }));
    chain.Slots[31] = node;
    EXPECT_EQ(chain.GetItemCount(), 6);

    CInspected table;
    CInspected sparse;
    constexpr const char* pairs = "31+0 31+4 31+4 31+8 31+8 31+12 31+12 31+16 ";
    EXPECT_EQ(Grown(table, {0, 31, 1, 32, 2, 33, 3, 34}), pairs);
    EXPECT_EQ(Grown(table, {4, 35}), "31+16 53+0 ") << "ten items are not sparse";
    EXPECT_EQ(Grown(sparse, {0, 31, 1, 32, 2, 33, 3, 34}), pairs);
    for (const std::int32_t key : {31, 1, 32, 2, 33, 3, 34}) {
        sparse.Delete(key);
    }
    EXPECT_EQ(Grown(sparse, {4, 35}), "31+16 31+4 ") << "removal gives nothing back, three items keep their buckets";
}

TEST(HashTable, BehavesAsAStandardMultisetUnderRandomSteps) {
    std::mt19937 random(20240607);
    const auto value = std::make_shared<int>(); // of all, so that it counts the nodes that live
    for (const std::int32_t spread : {7, 60, 4000}) {
        CMap<std::int32_t, std::shared_ptr<int>, CNumberKeyTraits> table;
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
            ASSERT_EQ(CountOf(table, key), model.count(key)) << "step " << step;
            ASSERT_EQ(static_cast<std::size_t>(table.GetItemCount()), model.size());
            ASSERT_EQ(value.use_count() - 1, table.GetItemCount());
            for (const std::int32_t held : step % 800 == 0 ? model : std::unordered_multiset<std::int32_t>()) {
                ASSERT_EQ(CountOf(table, held), model.count(held)) << "step " << step;
            }
        }
    }
    EXPECT_EQ(value.use_count(), 1);
}

TEST(HashTable, ExhaustedMemoryLeavesTheItems) {
    SKIP_WITHOUT_FAULTS();
    for (const std::int32_t step : {7, 31}) { // keys over all buckets, and in one chain
        std::unique_ptr<CInspected> table;
        const auto fill = [&] {
            for (std::int32_t i = table->GetItemCount(); i < 200; ++i) {
                table->Add(i * step);
            }
        };
        const auto check = [&](int nth) {
            fill();
            for (std::int32_t i = 0; i < 200; ++i) {
                ASSERT_EQ(CountOf(*table, i * step), 1U) << nth;
            }
            EXPECT_EQ(table->GetItemCount(), 200) << nth;
        };
        const auto prepare = [&table](int) { table = std::make_unique<CInspected>(); };
        EXPECT_GT(FailEachCall("HeapAlloc", 8, Platform::FaultMode::Once, prepare, fill, check), 9)
            << "slots and pages";
    }
}

TEST(Map, TextHashIsTheSameFourCharactersAStepAsOneByOne) {
    std::mt19937 random(9);
    std::uint32_t expected = 0;
    for (std::u16string text; text.size() < 70; expected = expected * 33 + text.back()) {
        ASSERT_EQ(HashText(text), expected) << "length " << text.size();
        text += static_cast<char16_t>(random() % 2 == 0 ? random() : 0xFFFF - random() % 3);
    }
    EXPECT_EQ(HashTextNoCase(u"aB"), 65U * 33 + 66);
}

TEST(Map, EqualKeysOfAMultimapKeepTheirOrder) {
    CMap<CUnicodeString, std::int32_t, CNoCaseStringKeyTraits> map;
    for (const auto& [key, value] : {std::pair(u"Name", 1), {u"name", 2}, {u"other", 3}, {u"NAME", 4}}) {
        map.Add(key, value);
    }
    EXPECT_EQ(ValuesOf(map, u"nAmE"), "1 2 4 ");
    map.Set(u"naMe", 5);
    map.Set(u"names", 6);
    EXPECT_EQ(ValuesOf(map, u"name"), "5 2 4 ") << "the first one's value is replaced";
    EXPECT_EQ(map.Get(u"NAME"), 5);
    map.DeleteAll(map.GetKeyAt(map.GetFirstPosition(u"name"))); // the argument goes with its node
    EXPECT_EQ(ValuesOf(map, u"other") + ValuesOf(map, u"Names") + ValuesOf(map, u"name"), "3 6 ");
    EXPECT_TRUE(!map.Find(u"name") && map.Find(u"Names"));
    ExpectRefused({[&] { map.Get(u"name"); }, [&] { std::as_const(map).Get(u"name"); }});
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

TEST(List, OwnsItsNodesWhichLeaveFromAnyPlace) {
    destroyed.clear();
    {
        CList<CItem> list;
        auto* c = new CItem('c');
        auto* b = new CItem('b');
        list.AddLast(b);
        list.AddFirst(new CItem('a', c)); // its destructor deletes another of the list
        list.AddLast(c);
        EXPECT_EQ(Names(list), "abc|cba3");
        ExpectRefused({[&] { list.AddLast(c); }, [&] { list.AddFirst(c); }, [&] { list.AddFirst(nullptr); }});
        c->Unlink();
        c->Unlink();
        list.AddFirst(c);
        EXPECT_EQ(Names(list), "cab|bac3");
        list.AddLast(new CItem('e'));
        delete b; // from the middle
        c->Unlink();
        list.AddLast(c);
        EXPECT_EQ(Names(list) + std::exchange(destroyed, ""), "aec|cea3b!");
    }
    EXPECT_EQ(destroyed, "ac!e") << "off the list first, but for the one that another took along";
}
