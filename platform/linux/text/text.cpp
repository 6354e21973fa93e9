#include "platform/inc/text.h"

#include "platform/inc/lasterror.h"
#include "platform/inc/memory.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/text/errortexts.h"
#include "platform/linux/text/lettercase.h"
#include "platform/linux/text/loadfailure.h"
#include "platform/linux/text/nativetext.h"
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <clocale>
#include <limits>
#include <string>
#include <string_view>

namespace Platform {

namespace {

// What the run-time of Windows skips in front of a number; found by trying each character.
constexpr std::u16string_view NumberSpaces =
    u"\t\n\v\f\r \u0085\u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009\u200A\u2028\u2029\u202F"
    u"\u205F\u3000";

// The digit 0 of each script whose digits it reads, found in the same way; 1 to 9 are the nine characters behind it.
constexpr std::u16string_view ZeroDigits =
    u"0\u0660\u06F0\u0966\u09E6\u0A66\u0AE6\u0B66\u0C66\u0CE6\u0D66\u0E50\u0ED0\u0F20\u1040\u17E0\u1810\uFF10";

// The run-time knows A to Z alone until a locale is set.
std::atomic<bool> FoldsAllLetters = false;

// -1 for a character that is no digit.
std::int32_t DigitOf(char16_t c) {
    for (const char16_t zero : ZeroDigits) {
        if (c >= zero && c <= zero + 9) {
            return c - zero;
        }
    }
    return -1;
}

} // namespace

std::uint32_t GetACP() {
    return CodePageUtf8;
}

std::uint32_t GetOEMCP() {
    return CodePageUtf8;
}

// In English alone, whatever language is asked for.
std::uint32_t FormatMessage(std::uint32_t flags, std::uint32_t code, std::uint32_t, char16_t*& text) {
    text = nullptr;
    PLATFORM_FAULT(FormatMessage, 0);
    std::u16string found(ErrorText(code));
    if (found.empty()) {
        return Fail(ErrorMessageNotFound, 0U);
    }
    if (!(flags & FormatMessageIgnoreInserts) && found.find(u'%') != std::u16string::npos) {
        return Fail(ErrorInvalidParameter, 0U);
    }
    if (const std::string_view words = ModuleErrorWords(code); !words.empty()) {
        found += Utf16Text(words) + u"\r\n";
    }
    text = static_cast<char16_t*>(AllocateRuntimeHeap((found.size() + 1) * sizeof(char16_t)));
    if (!text) {
        return Fail(ErrorNotEnoughMemory, 0U);
    }
    *std::copy(found.begin(), found.end(), text) = u'\0';
    return static_cast<std::uint32_t>(found.size());
}

void LocalFree(void* buffer) {
    FreeRuntimeHeap(buffer);
}

void SetUserLocale() {
    FoldsAllLetters = true;
    // One category with a locale that is not installed, as after a login from another machine, makes the whole call
    // fail. LC_CTYPE is then set alone: other libraries take the character set from it.
    if (!std::setlocale(LC_ALL, "")) {
        std::setlocale(LC_CTYPE, "");
    }
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
    return c < 0x80 || FoldsAllLetters ? DowncaseCharacter(c) : c;
}

char16_t towupper(char16_t c) {
    return c < 0x80 || FoldsAllLetters ? UpcaseCharacter(c) : c;
}

bool iswspace(char16_t c) {
    constexpr std::u16string_view others = u" \x85\xA0\u1680\u2028\u2029\u202F\u205F\u3000";
    return (c >= u'\t' && c <= u'\r') || (c >= u'\u2000' && c <= u'\u200A') ||
           others.find(c) != std::u16string_view::npos;
}

std::int32_t wcstol(const char16_t* text, const char16_t*& end, std::int32_t) {
    const char16_t* at = text;
    while (NumberSpaces.find(*at) != std::u16string_view::npos) {
        ++at;
    }
    const bool negative = *at == u'-';
    at += negative || *at == u'+' ? 1 : 0;
    const char16_t* const first = at;
    const std::int64_t limit = std::int64_t{std::numeric_limits<std::int32_t>::max()} + (negative ? 1 : 0);
    std::int64_t number = 0;
    for (std::int32_t digit = DigitOf(*at); digit >= 0; digit = DigitOf(*++at)) {
        number = std::min(number * 10 + digit, limit + 1);
    }
    if (number > limit) {
        errno = ERANGE;
        number = limit;
    }
    end = at == first ? text : at;
    return static_cast<std::int32_t>(negative ? -number : number);
}

} // namespace Platform
