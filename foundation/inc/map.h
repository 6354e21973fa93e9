// The map from keys to values: options of a command line, languages, classes of archives, files in memory.
#pragma once

#include "foundation/inc/keytraits.h"
#include "foundation/inc/slottable.h"

namespace Tsx {

template <class TKey, class TValue>
struct CKeyValueNode {
    TKey Key;
    TValue Value;
};

/// Where a map's broken chain is reported.
struct CMapPlace {
    static void FailLink() { FailAssertion(u"inc\\map", 673); }
};

/// Keys with values; with Add a multimap, in which equal keys keep their order until one of them is removed. The rules
/// of CSlotTable hold.
template <class TKey, class TValue, class TTraits = CKeyTraits<TKey>, class TMemory = CCurrentManagerPolicy>
class CMap : public CSlotTable<CKeyValueNode<TKey, TValue>, TTraits, TMemory, CMapPlace> {
    using TBase = CSlotTable<CKeyValueNode<TKey, TValue>, TTraits, TMemory, CMapPlace>;

public:
    explicit CMap(std::int32_t expectedSize = 31) : TBase(expectedSize) {}

    /// The first equal key's value. Absence is an internal error, and where that does not throw the value is an empty
    /// one that belongs to no key.
    TValue& Get(const TKey& key) {
        TValue* value = Find(key);
        TSX_ASSERT_AT(value, u"inc\\map", 352);
        return value ? *value : NoValue();
    }
    const TValue& Get(const TKey& key) const {
        const TValue* value = Find(key);
        TSX_ASSERT_AT(value, u"inc\\map", 360);
        return value ? *value : NoValue();
    }

    /// The same, and null for an absent key.
    TValue* Find(const TKey& key) { return ValueOrNull(this->GetFirstPosition(key)); }
    const TValue* Find(const TKey& key) const { return ValueOrNull(this->GetFirstPosition(key)); }

    TValue& GetValueAt(std::int32_t position) { return this->NodeAt(position).Value; }
    const TValue& GetValueAt(std::int32_t position) const { return this->NodeAt(position).Value; }

    /// Adds a node without looking for an equal key. The arguments may stand in this map.
    void Add(const TKey& key, TValue value) { this->Insert(TTraits::Hash(key), key, std::move(value)); }

    /// Replaces the first equal key's value, or adds.
    void Set(const TKey& key, TValue value) {
        const std::uint32_t hash = TTraits::Hash(key);
        if (TValue* present = ValueOrNull(this->FindHashed(key, hash))) {
            *present = std::move(value);
        } else {
            this->Insert(hash, key, std::move(value));
        }
    }

private:
    TValue* ValueOrNull(std::int32_t position) const {
        return position == NoPosition ? nullptr : &this->NodeAt(position).Value;
    }

    static TValue& NoValue() {
        static TValue none{};
        none = TValue{};
        return none;
    }
};

} // namespace Tsx
