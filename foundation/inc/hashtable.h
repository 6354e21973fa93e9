// The set of keys: open handles of files in memory, temporary files.
#pragma once

#include "foundation/inc/keytraits.h"
#include "foundation/inc/slottable.h"

namespace Tsx {

template <class TKey>
struct CKeyNode {
    TKey Key;
};

/// Where a set's broken chain is reported.
struct CHashTablePlace {
    static void FailLink() { FailAssertion(u"inc\\hashtable", 660); }
};

/// A set of keys, or with Add a bag of them. The rules of CSlotTable hold.
template <class TKey, class TTraits = CKeyTraits<TKey>, class TMemory = CCurrentManagerPolicy>
class CHashTable : public CSlotTable<CKeyNode<TKey>, TTraits, TMemory, CHashTablePlace> {
    using TBase = CSlotTable<CKeyNode<TKey>, TTraits, TMemory, CHashTablePlace>;

public:
    explicit CHashTable(std::int32_t expectedSize = 31) : TBase(expectedSize) {}

    /// Adds the key without looking for an equal one.
    void Add(const TKey& key) { this->Insert(TTraits::Hash(key), key); }

    /// Adds the key unless an equal one is there.
    void Set(const TKey& key) {
        const std::uint32_t hash = TTraits::Hash(key);
        if (this->FindHashed(key, hash) == NoPosition) {
            this->Insert(hash, key);
        }
    }
};

} // namespace Tsx
