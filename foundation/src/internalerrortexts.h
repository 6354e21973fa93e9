// The texts of internal errors that work before any catalogue does.
#pragma once

#include "foundation/inc/assertion.h"
#include "foundation/inc/unicodestring.h"

namespace Tsx {

constexpr const char16_t* InternalErrorText = u"Internal Program Error:\n%0, %1.";
constexpr const char16_t* InternalErrorWithCodeText = u"Internal Program Error:\n%0, %1.\nError code: %2";

/// Whether a kind of internal failure carries a Windows error code.
inline bool CarriesCode(std::uint32_t kind) {
    return kind == InternalAssertLastError || kind == InternalPresumeLastError;
}

/// "0x" and the code's hexadecimal digits.
inline CUnicodeString CodeText(std::uint32_t code) {
    return u"0x" + CUnicodeString::FromHex(code);
}

} // namespace Tsx
