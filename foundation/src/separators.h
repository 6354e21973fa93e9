// What separates the components of a path.
#pragma once

#include "foundation/inc/unicodestring.h"

namespace Tsx {

inline bool IsSeparator(char16_t c) {
    return c == u'\\' || c == u'/';
}

inline bool EndsInSeparator(const CUnicodeString& text) {
    return !text.IsEmpty() && IsSeparator(text[text.Length() - 1]);
}

} // namespace Tsx
