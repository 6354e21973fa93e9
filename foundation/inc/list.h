// Lists whose links lie in the members themselves: views of files in memory, and by tree.h their directories. A member
// takes itself off its list when it is destroyed, and a list destroys its members when it is.
#pragma once

#include <cstddef>
#include <iterator>

namespace Tsx {

class CListBase;

/// In one list at most.
class CListNodeBase {
public:
    CListNodeBase() = default;
    virtual ~CListNodeBase() { Unlink(); }
    CListNodeBase(const CListNodeBase&) = delete;
    CListNodeBase& operator=(const CListNodeBase&) = delete;

    /// Takes the node off its list, if it is in one.
    void Unlink();

    CListBase* List = nullptr; // null outside a list, and then the other two are null too
    CListNodeBase* Previous = nullptr;
    CListNodeBase* Next = nullptr;
};

/// Owns its nodes. A node that is added must be in no list, and a null one is an internal error too.
class CListBase {
public:
    CListBase() = default;
    virtual ~CListBase() { DeleteAll(); }
    CListBase(const CListBase&) = delete;
    CListBase& operator=(const CListBase&) = delete;

    void AddFirst(CListNodeBase* node);
    void AddLast(CListNodeBase* node);
    /// Deletes the nodes from the first on. Each is in no list any more when its destructor runs.
    void DeleteAll();

    bool IsEmpty() const { return First == nullptr; }
    std::size_t CountNodes() const;

    CListNodeBase* First = nullptr;
    CListNodeBase* Last = nullptr;
};

/// Steps over the nodes of a list of T.
template <class T>
class CListIterator {
public:
    using iterator_category = std::forward_iterator_tag;
    using difference_type = std::ptrdiff_t;
    using value_type = T;
    using pointer = T*;
    using reference = T&;

    CListIterator() = default;
    explicit CListIterator(CListNodeBase* first) : node(first) {}

    T& operator*() const { return *static_cast<T*>(node); }
    T* operator->() const { return static_cast<T*>(node); }
    CListIterator& operator++() {
        node = node->Next;
        return *this;
    }
    CListIterator operator++(int) {
        CListIterator before = *this;
        ++*this;
        return before;
    }
    bool operator==(const CListIterator&) const = default;

private:
    CListNodeBase* node = nullptr;
};

/// A list of T, which derives from CListNode<T>.
template <class T>
class CList : public CListBase {
public:
    T* GetFirst() const { return static_cast<T*>(First); }
    T* GetLast() const { return static_cast<T*>(Last); }
    CListIterator<T> begin() const { return CListIterator<T>(First); }
    CListIterator<T> end() const { return CListIterator<T>(); }
};

/// A member of a TList.
template <class T, class TList = CList<T>>
class CListNode : public CListNodeBase {
public:
    TList* GetList() const { return static_cast<TList*>(List); }
    T* GetPrevious() const { return static_cast<T*>(Previous); }
    T* GetNext() const { return static_cast<T*>(Next); }
};

} // namespace Tsx
