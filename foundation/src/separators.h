// What separates the components of a path: for the path operations and the native file system.
#pragma once

#include "foundation/inc/unicodestring.h"

namespace Tsx {

inline bool IsSeparator(char16_t c) {
    return c == u'\\' || c == u'/';
}

inline std::int32_t FindLastSeparator(const CUnicodeString& text) {
    return static_cast<std::int32_t>(text.View().find_last_of(u"\\/"));
}

inline bool EndsInSeparator(const CUnicodeString& text) {
    return !text.IsEmpty() && IsSeparator(text[text.Length() - 1]);
}

} // namespace Tsx
