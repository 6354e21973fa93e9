// The wide string: nearly everything passes text as this type.
#pragma once

#include "foundation/inc/format.h"
#include "foundation/inc/narrowstring.h"
#include "foundation/inc/stringbase.h"
#include "foundation/inc/unicodecharset.h"
#include "platform/inc/types.h"
#include <initializer_list>

namespace Tsx {

constexpr std::uint32_t AnsiCodePage = 0; // selects the system's ANSI page, GetACP
constexpr std::uint32_t OemCodePage = 1;  // selects the system's OEM page, GetOEMCP

class CUnicodeString : public CStringBase<CUnicodeString, char16_t> {
public:
    using CStringBase::CStringBase;
    CUnicodeString() = default;
    /// From narrow text in a code page or a selector of one; cut at the first 0. What cannot be converted at all comes
    /// out empty.
    CUnicodeString(const char* text, std::uint32_t codePage);

    /// The same from `count` bytes. The block has room for a fifth more than the text at most.
    static CUnicodeString FromNarrow(const char* text, std::int32_t count, std::uint32_t codePage);
    /// From a buffer of `count` characters, cut at the first 0 in it.
    static CUnicodeString FromBuffer(const char16_t* buffer, std::int32_t count);
    /// The address, and the path of the module that holds it, if one does: "0x00007FF612345678 (C:\a\b.exe)".
    static CUnicodeString DescribeAddress(const void* address);

    /// Text in the language of wide print; see FormatText.
    template <class... TArguments>
    static CUnicodeString Format(const char16_t* format, const TArguments&... arguments) {
        return FormatList(format, {CFormatArgument(arguments)...});
    }

    /// The value in a radix from 2 to 36, lower-case; negative with a sign in radix 10 and as unsigned in any other.
    static CUnicodeString FromInt(std::int32_t value, std::int32_t radix = 10);
    static CUnicodeString FromHex(std::uint32_t value);
    static CUnicodeString FromBool(bool value);

    CString ToNarrow(std::uint32_t codePage) const { return CString::FromWide(Text(), Length(), codePage); }

    /// A decimal number with optional sign and white space around it, in the digits of any script that the run-time
    /// knows; false, and `value` as it was, for anything else and for a number out of the range of 32 signed bits.
    /// AS DESIGNED: the radix is 10 whatever is passed.
    bool ToInt(std::int32_t& value, std::int32_t radix = 10) const;
    /// "true", "on", "yes", "1" and "false", "off", "no", "0", in any case, with white space around; false for anything
    /// else.
    bool ToBool(bool& value) const;

    /// Removes members of a set from the ends.
    void TrimLeft(const CUnicodeCharSet& set = WhiteSpaceChars);
    void TrimRight(const CUnicodeCharSet& set = WhiteSpaceChars);
    void Trim(const CUnicodeCharSet& set = WhiteSpaceChars);

    /// By the run-time's rules in the current locale.
    void MakeLower();
    /// The order without regard to case, by the run-time's rules in the current locale.
    std::int32_t CompareNoCase(const char16_t* other) const;

    /// Takes the string resource `id` of a module. False, and empty, if the module has no such text.
    bool LoadString(Platform::Module module, std::uint32_t id);

private:
    static CUnicodeString FormatList(const char16_t* format, std::initializer_list<CFormatArgument> arguments);
};

} // namespace Tsx
