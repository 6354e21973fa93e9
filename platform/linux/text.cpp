#include "platform/inc/text.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/errortexts.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/nativetext.h"
#include <algorithm>
#include <clocale>
#include <cwctype>
#include <limits>
#include <string>

namespace Platform {

namespace {

// UTF-8 is the only page so far. As on Windows an empty source is refused, and so are the flags that have no meaning
// for UTF-8.
bool CheckConversion(std::uint32_t codePage, std::uint32_t flags, std::int32_t length) {
    if (codePage != CodePageUtf8 || length == 0 || length < -1) {
        return Fail(ErrorInvalidParameter);
    }
    return flags == 0 || Fail(ErrorInvalidFlags);
}

template <class TChar>
std::basic_string_view<TChar> Source(const TChar* text, std::int32_t length) {
    using Traits = std::char_traits<TChar>;
    return {text, length < 0 ? Traits::length(text) + 1 : static_cast<std::size_t>(length)};
}

template <class TChar>
std::int32_t Deliver(const std::basic_string<TChar>& converted, TChar* buffer, std::int32_t size) {
    if (converted.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        SetLastError(ErrorNotEnoughMemory);
        return 0;
    }
    const auto length = static_cast<std::int32_t>(converted.size());
    if (size == 0) {
        return length;
    }
    if (length > size) {
        SetLastError(ErrorInsufficientBuffer);
        return 0;
    }
    std::copy(converted.begin(), converted.end(), buffer);
    return length;
}

} // namespace

std::uint32_t GetACP() {
    return CodePageUtf8;
}

std::uint32_t GetOEMCP() {
    return CodePageUtf8;
}

std::int32_t WideCharToMultiByte(std::uint32_t codePage, std::uint32_t flags, const char16_t* text, std::int32_t length,
                                 char* buffer, std::int32_t size) {
    PLATFORM_FAULT(WideCharToMultiByte, 0);
    return CheckConversion(codePage, flags, length) ? Deliver(Utf8Text(Source(text, length)), buffer, size) : 0;
}

std::int32_t MultiByteToWideChar(std::uint32_t codePage, std::uint32_t flags, const char* text, std::int32_t length,
                                 char16_t* buffer, std::int32_t size) {
    PLATFORM_FAULT(MultiByteToWideChar, 0);
    return CheckConversion(codePage, flags, length) ? Deliver(Utf16Text(Source(text, length)), buffer, size) : 0;
}

std::uint32_t FormatMessage(std::uint32_t code, std::uint32_t language, char16_t* buffer, std::uint32_t size) {
    PLATFORM_FAULT(FormatMessage, 0);
    static_cast<void>(language); // the texts exist in English alone
    const std::u16string_view text = ErrorText(code);
    if (text.empty() || text.size() >= size) {
        SetLastError(text.empty() ? ErrorResourceNameNotFound : ErrorInsufficientBuffer);
        return 0;
    }
    *std::copy(text.begin(), text.end(), buffer) = u'\0';
    return static_cast<std::uint32_t>(text.size());
}

void SetUserLocale() {
    std::setlocale(LC_ALL, "");
}

std::int32_t wcsicmp(const char16_t* a, const char16_t* b) {
    return wcsnicmp(a, b, std::numeric_limits<std::int32_t>::max());
}

std::int32_t wcsnicmp(const char16_t* a, const char16_t* b, std::int32_t count) {
    for (; count > 0; --count, ++a, ++b) {
        const std::int32_t difference = towlower(*a) - towlower(*b);
        if (difference != 0 || *a == u'\0') {
            return difference;
        }
    }
    return 0;
}

char16_t towlower(char16_t c) {
    return static_cast<char16_t>(std::towlower(c));
}

char16_t towupper(char16_t c) {
    return static_cast<char16_t>(std::towupper(c));
}

bool iswspace(char16_t c) {
    return std::iswspace(c) != 0;
}

} // namespace Platform
