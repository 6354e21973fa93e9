#include "foundation/inc/lineends.h"

namespace Tsx {

CUnicodeString WithCarriageReturns(const CUnicodeString& text) {
    CUnicodeString repaired;
    char16_t previous = 0;
    for (const char16_t c : text.View()) {
        if (c == u'\n' && previous != u'\r') {
            repaired += u'\r';
        }
        repaired += c;
        previous = c;
    }
    return repaired;
}

} // namespace Tsx
