#include "platform/inc/text.h"

#include "platform/inc/lasterror.h"
#include "platform/inc/memory.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/errortexts.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/lettercase.h"
#include <algorithm>
#include <atomic>
#include <clocale>
#include <limits>
#include <string_view>

namespace Platform {

std::uint32_t GetACP() {
    return CodePageUtf8;
}

std::uint32_t GetOEMCP() {
    return CodePageUtf8;
}

std::uint32_t FormatMessage(std::uint32_t flags, std::uint32_t code, std::uint32_t language, char16_t*& text) {
    text = nullptr;
    PLATFORM_FAULT(FormatMessage, 0);
    static_cast<void>(language); // the texts exist in English alone
    const std::u16string_view found = ErrorText(code);
    if (found.empty()) {
        SetLastError(ErrorMessageNotFound);
        return 0;
    }
    if (!(flags & FormatMessageIgnoreInserts) && found.find(u'%') != std::u16string_view::npos) {
        SetLastError(ErrorInvalidParameter);
        return 0;
    }
    text = static_cast<char16_t*>(AllocateRuntimeHeap((found.size() + 1) * sizeof(char16_t)));
    if (!text) {
        SetLastError(ErrorNotEnoughMemory);
        return 0;
    }
    *std::copy(found.begin(), found.end(), text) = u'\0';
    return static_cast<std::uint32_t>(found.size());
}

void LocalFree(void* buffer) {
    FreeRuntimeHeap(buffer);
}

namespace {

// The run-time knows A to Z alone until a locale is set.
std::atomic<bool> FoldsAllLetters = false;

} // namespace

void SetUserLocale() {
    FoldsAllLetters = true;
    // Each category is a file of its own to be read, and nothing here asks for another one.
    std::setlocale(LC_CTYPE, "");
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

} // namespace Platform
