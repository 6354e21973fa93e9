// The storage of the hash tables' nodes: pages that double in size, and a list of the nodes that were given back.
#pragma once

#include "foundation/inc/allocationpolicy.h"
#include "foundation/inc/poison.h"
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

namespace Tsx {

/// Raw room for nodes of NodeSize bytes, aligned to 8. For one thread at a time. Whoever takes a node builds and
/// destroys what is in it.
///
///   NodeSize    payload bytes of the 1st, 2nd, 3rd ... page
///   8           128, 256, 512 ... 0x100000, 0x100000
///   16          256, 512, 1024 ... 0x100000, 0x100000
///
/// A page is preceded by a header of 16 bytes. Pages go back all at once, in ReleasePages and at destruction.
template <std::int32_t NodeSize, class TMemory = CCurrentManagerPolicy>
class CNodeArena {
    static_assert(NodeSize >= 8 && NodeSize % 8 == 0, "a free node holds a pointer, and the low bits must stay clear");

public:
    static constexpr std::int32_t FirstPageSize = 16 * NodeSize;
    static constexpr std::int32_t LargestPageSize = 0x100000;

    CNodeArena() = default;
    ~CNodeArena() { ReleasePages(); }
    CNodeArena(const CNodeArena&) = delete;
    CNodeArena& operator=(const CNodeArena&) = delete;

    /// Room for one node. Raises CMemoryException and leaves the arena as it was.
    void* Take() {
        void* node = FreeNodes;
        if (node) {
            UnpoisonMemory(node, NodeSize);
            FreeNodes = static_cast<CFreeNode*>(node)->next;
            return node;
        }
        if (!Pages || Pages->payloadSize - PageUsed < NodeSize) {
            AddPage();
        }
        node = Payload(Pages) + PageUsed;
        UnpoisonMemory(node, NodeSize);
        PageUsed += NodeSize;
        return node;
    }

    /// Takes back a node of this arena; the next Take returns it.
    void GiveBack(void* node) noexcept {
        FreeNodes = new (node) CFreeNode{FreeNodes};
        PoisonMemory(node, NodeSize);
    }

    /// Releases every page with all nodes in it; the next page is of the first size again.
    void ReleasePages() noexcept {
        while (Pages) {
            CPage* page = std::exchange(Pages, Pages->older);
            UnpoisonMemory(Payload(page), static_cast<std::size_t>(page->payloadSize));
            TMemory::Free(page);
        }
        FreeNodes = nullptr;
        PageUsed = 0;
        NextPageSize = FirstPageSize;
    }

    void Swap(CNodeArena& other) noexcept {
        std::swap(Pages, other.Pages);
        std::swap(FreeNodes, other.FreeNodes);
        std::swap(PageUsed, other.PageUsed);
        std::swap(NextPageSize, other.NextPageSize);
    }

protected:
    struct CPage {
        CPage* older;
        std::int32_t payloadSize;
    };
    static_assert(sizeof(CPage) == 16);

    struct CFreeNode {
        CFreeNode* next;
    };

    CPage* Pages = nullptr;         // newest first
    CFreeNode* FreeNodes = nullptr; // last given back first
    std::int32_t PageUsed = 0;      // bytes used in the newest page
    std::int32_t NextPageSize = FirstPageSize;

private:
    static std::byte* Payload(CPage* page) { return reinterpret_cast<std::byte*>(page + 1); }

    [[gnu::noinline]] void AddPage() {
        void* block = TMemory::Alloc(std::int64_t{NextPageSize} + static_cast<std::int64_t>(sizeof(CPage)));
        Pages = new (block) CPage{Pages, NextPageSize};
        PoisonMemory(Payload(Pages), static_cast<std::size_t>(NextPageSize));
        PageUsed = 0;
        NextPageSize = std::min(NextPageSize * 2, LargestPageSize);
    }
};

} // namespace Tsx
