#include "foundation/inc/list.h"

#include "foundation/inc/assertion.h"

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\list";

} // namespace

void CListNodeBase::Unlink() {
    if (!List) {
        return;
    }
    (List->First == this ? List->First : Previous->Next) = Next;
    (List->Last == this ? List->Last : Next->Previous) = Previous;
    List = nullptr;
    Previous = nullptr;
    Next = nullptr;
}

void CListBase::AddFirst(CListNodeBase* node) {
    TSX_REQUIRE(node && !node->List, ModuleName);
    node->List = this;
    node->Next = First;
    (First ? First->Previous : Last) = node;
    First = node;
}

void CListBase::AddLast(CListNodeBase* node) {
    TSX_REQUIRE(node && !node->List, ModuleName);
    node->List = this;
    node->Previous = Last;
    (Last ? Last->Next : First) = node;
    Last = node;
}

void CListBase::DeleteAll() {
    while (First) {
        // Off the list first, so that whatever the node's destructor does finds a list in order.
        CListNodeBase* const node = First;
        First = node->Next;
        (First ? First->Previous : Last) = nullptr;
        node->List = nullptr;
        node->Next = nullptr;
        delete node;
    }
}

std::size_t CListBase::CountNodes() const {
    std::size_t count = 0;
    for (const CListNodeBase* node = First; node; node = node->Next) {
        ++count;
    }
    return count;
}

} // namespace Tsx
