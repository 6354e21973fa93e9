#include "foundation/inc/nodearena.h"

#include "tests/support/text.h"
#include <cstring>
#include <random>
#include <set>

using namespace Tsx;

namespace {

/// Sizes of what is alive, newest last.
std::vector<std::int64_t> blockSizes;

struct CNotingPolicy {
    static void* Alloc(std::int64_t size) {
        if (size == refused) {
            GenerateMemoryException();
        }
        blockSizes.push_back(size);
        return CRuntimeHeapPolicy::Alloc(size);
    }
    static void Free(void* block) noexcept {
        if (block) {
            blockSizes.pop_back();
        }
        CRuntimeHeapPolicy::Free(block);
    }
    static inline std::int64_t refused = 0;
};

template <std::int32_t NodeSize>
class CInspectedArena : public CNodeArena<NodeSize, CNotingPolicy> {
public:
    using CNodeArena<NodeSize, CNotingPolicy>::NextPageSize;
    using CNodeArena<NodeSize, CNotingPolicy>::PageUsed;
};

} // namespace

TEST(NodeArena, PagesDoubleUpToTheLargest) {
    blockSizes.clear();
    CInspectedArena<24> arena;
    EXPECT_EQ(arena.NextPageSize, 384);
    for (int i = 0; i < 16; ++i) {
        arena.Take();
    }
    EXPECT_EQ(blockSizes, (std::vector<std::int64_t>{384 + 16}));
    EXPECT_EQ(arena.PageUsed, 384);
    arena.Take();
    EXPECT_EQ(blockSizes, (std::vector<std::int64_t>{384 + 16, 768 + 16}));
    EXPECT_EQ(arena.PageUsed, 24);
    while (blockSizes.size() < 14) {
        arena.Take();
    }
    EXPECT_EQ(blockSizes[11], 384 * 2048 + 16);
    EXPECT_EQ(blockSizes[12], 0x100000 + 16);
    EXPECT_EQ(blockSizes[13], 0x100000 + 16);
    arena.ReleasePages();
    EXPECT_TRUE(blockSizes.empty());
    EXPECT_EQ(arena.NextPageSize, 384);
    arena.Take();
    EXPECT_EQ(blockSizes.back(), 384 + 16);
}

TEST(NodeArena, GivesOutWhatCameBackLast) {
    CInspectedArena<8> arena;
    void* first = arena.Take();
    void* second = arena.Take();
    arena.GiveBack(first);
    arena.GiveBack(second);
    EXPECT_EQ(arena.Take(), second);
    EXPECT_EQ(arena.Take(), first);
    EXPECT_EQ(arena.PageUsed, 16);
}

TEST(NodeArena, ARefusedPageChangesNothing) {
    CInspectedArena<16> arena;
    for (int i = 0; i < 16; ++i) {
        arena.Take();
    }
    CNotingPolicy::refused = 512 + 16;
    EXPECT_TRUE(Raised<CMemoryException>([&] { arena.Take(); }));
    CNotingPolicy::refused = 0;
    EXPECT_EQ(arena.NextPageSize, 512);
    EXPECT_EQ(arena.PageUsed, 256);
    EXPECT_NE(arena.Take(), nullptr);
}

TEST(NodeArena, NodesOfARandomRunNeverOverlap) {
    constexpr unsigned seed = 77;
    std::mt19937 random(seed);
    CInspectedArena<40> arena;
    std::vector<std::byte*> held;
    std::set<std::byte*> places;
    for (int step = 0; step < 200000; ++step) {
        if (held.empty() || random() % 100 < 55) {
            auto* node = static_cast<std::byte*>(arena.Take());
            const auto next = places.lower_bound(node);
            ASSERT_TRUE(next == places.end() || *next - node >= 40) << "seed " << seed << " step " << step;
            ASSERT_TRUE(next == places.begin() || node - *std::prev(next) >= 40) << "seed " << seed << " step " << step;
            ASSERT_EQ(reinterpret_cast<std::uintptr_t>(node) % 8, 0U);
            std::memset(node, step, 40);
            held.push_back(node);
            places.insert(node);
        } else {
            std::swap(held[random() % held.size()], held.back());
            places.erase(held.back());
            arena.GiveBack(held.back());
            held.pop_back();
        }
    }
}

#ifdef TSX_POISON
TEST(NodeArena, NodesThatAreNotHeldAreWatched) {
    CInspectedArena<8> arena;
    void* node = arena.Take();
    void* next = static_cast<std::byte*>(node) + 8;
    EXPECT_FALSE(__asan_address_is_poisoned(node));
    EXPECT_TRUE(__asan_address_is_poisoned(next)) << "not given out yet";
    arena.GiveBack(node);
    EXPECT_TRUE(__asan_address_is_poisoned(node));
}
#endif
