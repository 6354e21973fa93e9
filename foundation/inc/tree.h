// Trees of objects that have their links in themselves.
#pragma once

#include "foundation/inc/list.h"

namespace Tsx {

/// A node among its siblings, and the list of its children, which go with it.
class CTreeBase : public CListNodeBase, public CListBase {};

/// The children of a T.
template <class T>
struct CTreeChildren {
    CListIterator<T> begin() const { return CListIterator<T>(first); }
    CListIterator<T> end() const { return CListIterator<T>(); }
    CListNodeBase* first;
};

/// The base of T, whose parent and children are TParent and T.
template <class T, class TParent = T>
class CTree : public CTreeBase {
public:
    /// Null for a root.
    TParent* GetParent() const { return static_cast<TParent*>(static_cast<CTreeBase*>(List)); }
    CTreeChildren<T> GetChildren() const { return {First}; }
};

} // namespace Tsx
