#include "foundation/inc/unicodecharset.h"

namespace Tsx {

CUnicodeCharSet::CUnicodeCharSet(std::u16string_view members) {
    for (const char16_t c : members) {
        auto& leaf = leaves[c >> LeafBits];
        if (!leaf) {
            leaf = std::make_unique<std::bitset<LeafSize>>();
        }
        leaf->set(c & (LeafSize - 1));
    }
}

} // namespace Tsx
