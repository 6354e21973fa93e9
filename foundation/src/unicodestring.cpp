#include "foundation/inc/unicodestring.h"

#include "foundation/inc/assertion.h"
#include "platform/inc/memory.h"
#include "platform/inc/modules.h"
#include "platform/inc/resources.h"
#include "platform/inc/text.h"
#include <cerrno>
#include <charconv>
#include <limits>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\unicodestring";

std::uint32_t ResolveCodePage(std::uint32_t selector) {
    if (selector == AnsiCodePage) {
        return Platform::GetACP();
    }
    return selector == OemCodePage ? Platform::GetOEMCP() : selector;
}

// The code pages for which the conversions take no flags.
bool TakesNoFlags(std::uint32_t codePage) {
    constexpr std::uint32_t single[] = {42, 50220, 50221, 50222, 50225, 50227, 50229, 52936, 54936, 65000, 65001};
    return (codePage >= 57002 && codePage <= 57011) ||
           std::find(std::begin(single), std::end(single), codePage) != std::end(single);
}

constexpr std::uint32_t ToBytesFlags = 544; // WC_COMPOSITECHECK and WC_SEPCHARS
constexpr std::uint32_t ToWideFlags = 9;    // MB_PRECOMPOSED and MB_ERR_INVALID_CHARS: a bad byte refuses the text

std::int32_t CountAtEnd(std::u16string_view text, const CUnicodeCharSet& set) {
    std::int32_t count = 0;
    while (static_cast<std::size_t>(count) < text.size() &&
           set.Contains(text[text.size() - 1 - static_cast<std::size_t>(count)])) {
        ++count;
    }
    return count;
}

} // namespace

CString CString::FromWide(const char16_t* text, std::int32_t count, std::uint32_t codePage) {
    CString result;
    if (count <= 0) {
        return result;
    }
    const std::uint32_t page = ResolveCodePage(codePage);
    const std::uint32_t flags = TakesNoFlags(page) ? 0 : ToBytesFlags;
    const std::int32_t size = Platform::WideCharToMultiByte(page, flags, text, count, nullptr, 0);
    if (size > 0) {
        char* buffer = result.GetBuffer(size);
        const std::int32_t written = Platform::WideCharToMultiByte(page, flags, text, count, buffer, size);
        buffer[written] = '\0';
        result.FinishAtTerminator();
    }
    return result;
}

CString CString::FromInt(std::int32_t value) {
    char digits[16];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), value);
    return {digits, static_cast<std::int32_t>(end.ptr - digits)};
}

CUnicodeString CUnicodeString::FromBuffer(const char16_t* buffer, std::int32_t count) {
    return {buffer, static_cast<std::int32_t>(std::find(buffer, buffer + count, u'\0') - buffer)};
}

CUnicodeString CUnicodeString::DescribeAddress(const void* address) {
    CUnicodeString text = Format(u"0x%p", address);
    const Platform::MemoryRegion region = Platform::QueryAddress(address);
    char16_t path[261];
    const std::uint32_t length =
        region.committed && region.module ? Platform::GetModuleFileName(region.module, path, std::size(path)) : 0;
    if (length > 0) {
        text += u" (";
        text.Append(path, static_cast<std::int32_t>(std::min<std::size_t>(length, std::size(path) - 1)));
        text += u')';
    }
    return text;
}

CUnicodeString::CUnicodeString(const char* text, std::uint32_t codePage) {
    const std::size_t count = text ? std::char_traits<char>::length(text) : 0;
    if (count <= static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        *this = FromNarrow(text, static_cast<std::int32_t>(count), codePage);
    }
}

CUnicodeString CUnicodeString::FromNarrow(const char* text, std::int32_t count, std::uint32_t codePage) {
    CUnicodeString result;
    if (count <= 0) {
        return result;
    }
    const std::uint32_t page = ResolveCodePage(codePage);
    const std::uint32_t flags = TakesNoFlags(page) ? 0 : ToWideFlags;
    const bool isUtf8 = page == Platform::CodePageUtf8;
    if (isUtf8) {
        // No other byte gives a character 0 there, and bytes are searched faster.
        count = static_cast<std::int32_t>(std::min(std::string_view(text, static_cast<std::size_t>(count)).find('\0'),
                                                   static_cast<std::size_t>(count)));
    }
    // A long text is converted at once into the most that it can become, without asking for its size.
    constexpr std::int32_t longText = 0x10000;
    std::int32_t size = 0;
    std::int32_t written = 0;
    if (count >= longText) {
        size = count;
        written = Platform::MultiByteToWideChar(page, flags, text, count, result.GetBuffer(size), size);
    }
    if (written == 0) {
        size = Platform::MultiByteToWideChar(page, flags, text, count, nullptr, 0);
        written = size > 0 ? Platform::MultiByteToWideChar(page, flags, text, count, result.GetBuffer(size), size) : 0;
    }
    if (written == 0) {
        return {};
    }
    const std::u16string_view converted(result.Text(), static_cast<std::size_t>(written));
    result.SetLength(isUtf8 ? written : static_cast<std::int32_t>(std::min(converted.find(u'\0'), converted.size())));
    // What growth would not have taken either, more than a fifth over, is given back.
    const std::int32_t length = result.Length();
    return size - length > length / 5 ? CUnicodeString(result.Text(), length) : result;
}

CUnicodeString CUnicodeString::FormatList(const char16_t* format, std::initializer_list<CFormatArgument> arguments) {
    CUnicodeString result;
    const auto count = static_cast<std::int32_t>(arguments.size());
    for (std::int32_t capacity = 256;; capacity *= 2) {
        const std::int32_t length = FormatText(result.GetBuffer(capacity), capacity, format, arguments.begin(), count);
        if (length >= 0) {
            result.SetLength(length);
            return result;
        }
        if (capacity > std::numeric_limits<std::int32_t>::max() / 2) {
            GenerateMemoryException();
        }
    }
}

CUnicodeString CUnicodeString::FromInt(std::int32_t value, std::int32_t radix) {
    TSX_REQUIRE(radix >= 2 && radix <= 36, ModuleName, {});
    char digits[40]; // all of ASCII
    const char* const end = radix == 10
                                ? std::to_chars(digits, std::end(digits), value).ptr
                                : std::to_chars(digits, std::end(digits), static_cast<std::uint32_t>(value), radix).ptr;
    CUnicodeString text;
    const auto length = static_cast<std::int32_t>(end - digits);
    std::copy(std::cbegin(digits), end, text.GetBuffer(length));
    text.SetLength(length);
    return text;
}

CUnicodeString CUnicodeString::FromHex(std::uint32_t value) {
    return FromInt(static_cast<std::int32_t>(value), 16);
}

CUnicodeString CUnicodeString::FromBool(bool value) {
    return value ? u"true" : u"false";
}

bool CUnicodeString::ToInt(std::int32_t& value, std::int32_t) const {
    const char16_t* first = Text();
    while (WhiteSpaceChars.Contains(*first)) {
        ++first;
    }
    const char16_t* end = first;
    errno = 0;
    const std::int32_t number = Platform::wcstol(first, end, 10);
    if (errno == ERANGE || end == first) {
        return false;
    }
    while (WhiteSpaceChars.Contains(*end)) {
        ++end;
    }
    if (end != Text() + Length()) {
        return false;
    }
    value = number;
    return true;
}

bool CUnicodeString::ToBool(bool& value) const {
    struct Word {
        const char16_t* text;
        bool value;
    };
    constexpr Word words[] = {{u"true", true},   {u"on", true},   {u"yes", true}, {u"1", true},
                              {u"false", false}, {u"off", false}, {u"no", false}, {u"0", false}};
    CUnicodeString text = *this;
    text.Trim();
    for (const Word& word : words) {
        if (text.CompareNoCase(word.text) == 0) {
            value = word.value;
            return true;
        }
    }
    return false;
}

void CUnicodeString::TrimRight(const CUnicodeCharSet& set) {
    if (const std::int32_t surplus = CountAtEnd(View(), set); surplus > 0) {
        SetLength(Length() - surplus);
    }
}

void CUnicodeString::TrimLeft(const CUnicodeCharSet& set) {
    std::int32_t surplus = 0;
    while (surplus < Length() && set.Contains((*this)[surplus])) {
        ++surplus;
    }
    if (surplus > 0) {
        char16_t* text = GetBuffer(Length());
        std::copy(text + surplus, text + Length(), text);
        SetLength(Length() - surplus);
    }
}

void CUnicodeString::Trim(const CUnicodeCharSet& set) {
    TrimRight(set);
    TrimLeft(set);
}

void CUnicodeString::MakeLower() {
    char16_t* buffer = GetBuffer(Length());
    std::transform(buffer, buffer + Length(), buffer, &Platform::towlower);
}

std::int32_t CUnicodeString::CompareNoCase(const char16_t* other) const {
    return Platform::wcsicmp(Text(), other ? other : u"");
}

bool CUnicodeString::LoadString(Platform::Module module, std::uint32_t id) {
    TSX_REQUIRE(module, ModuleName, false);
    std::int32_t count = 0;
    std::int32_t limit = 127;
    for (;; limit *= 2) {
        const std::int32_t capacity = 2 * limit; // only half of the buffer is ever used
        count = Platform::LoadString(module, id, GetBuffer(capacity), limit);
        TSX_REQUIRE(count < capacity, ModuleName, false);
        SetLength(count);
        if (count < limit - 1) {
            break;
        }
    }
    if (count == 0) {
        Clear();
    }
    return count != 0;
}

} // namespace Tsx
