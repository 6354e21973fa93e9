// An input as wide text: pairs of bytes, an odd one at the end left out.
#pragma once

#include "foundation/inc/unicodestring.h"
#include <cstring>
#include <string>

inline Tsx::CUnicodeString WideText(const std::string& bytes) {
    std::u16string text(bytes.size() / sizeof(char16_t), u'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(char16_t));
    return Tsx::CUnicodeString::FromBuffer(text.data(), static_cast<std::int32_t>(text.size()));
}
