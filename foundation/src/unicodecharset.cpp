#include "foundation/inc/unicodecharset.h"

#include "foundation/src/statics.h"
#include <cstring>

namespace Tsx {

CUnicodeCharSet::CUnicodeCharSet(std::u16string_view members) : CUnicodeCharSet() { // whose leaves the destructor frees
    static_assert(sizeof(Leaf) == LeafBytes);
    for (const char16_t c : members) {
        Add(c);
    }
}

CUnicodeCharSet::~CUnicodeCharSet() {
    const CCriticalSectionLock guard(CharSetLeafLock);
    for (Leaf* leaf : leaves) {
        CharSetLeaves.FreeBlock(leaf);
    }
}

void CUnicodeCharSet::Add(char16_t c) {
    Leaf*& leaf = leaves[c >> LeafBits];
    if (!leaf) {
        const CCriticalSectionLock guard(CharSetLeafLock);
        leaf = static_cast<Leaf*>(CharSetLeaves.AllocBlock());
        std::memset(leaf, 0, sizeof(*leaf));
    }
    leaf->words[(c & (LeafSize - 1)) / 32] |= 1U << (c & 31);
}

} // namespace Tsx
