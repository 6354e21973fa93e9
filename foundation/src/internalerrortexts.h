// The texts of internal errors that work before any catalogue does, for the sources of errors.h.
#pragma once

#include "foundation/inc/assertion.h"
#include "foundation/inc/unicodestring.h"

namespace Tsx {

#define TSX_INTERNAL_ERROR_HEAD u"Internal Program Error:\n" // a macro, for literals join at compile time alone

constexpr const char16_t* InternalErrorText = TSX_INTERNAL_ERROR_HEAD u"%0, %1.";
constexpr const char16_t* InternalErrorWithCodeText = TSX_INTERNAL_ERROR_HEAD u"%0, %1.\nError code: %2";
constexpr const char16_t* AssertText = TSX_INTERNAL_ERROR_HEAD u"Assertion failed: ( %0 )\n%2, %3.\n( %1 ).";
constexpr const char16_t* AssertLastErrorText =
    TSX_INTERNAL_ERROR_HEAD u"Assertion failed: ( %0 )\n%2, %3.\n( %1 ).\nError code: %4 - %5";
constexpr const char16_t* PresumeText = TSX_INTERNAL_ERROR_HEAD u"Presumption failed: ( %0 )\n%2, %3.\n( %1 ).";
constexpr const char16_t* PresumeLastErrorText =
    TSX_INTERNAL_ERROR_HEAD u"Presumption failed: ( %0 )\n%2, %3.\n( %1 ).\nError code: %4 - %5";
/// InternalErrorText for the formatter, where there are no strings to fill it with.
constexpr const char16_t* PlaceFormat = TSX_INTERNAL_ERROR_HEAD u"%s, %u.";

#undef TSX_INTERNAL_ERROR_HEAD

/// Whether a kind of internal failure carries a Windows error code.
inline bool CarriesCode(std::uint32_t kind) {
    return kind == InternalAssertLastError || kind == InternalPresumeLastError;
}

/// "0x" and the code's hexadecimal digits.
inline CUnicodeString CodeText(std::uint32_t code) {
    return u"0x" + CUnicodeString::FromHex(code);
}

} // namespace Tsx
