#include "platform/inc/text.h"

#include "platform/win32/windowsapi.h"
#include <clocale>
#include <cwctype>

namespace Platform {

std::uint32_t GetACP() {
    return ::GetACP();
}

std::uint32_t GetOEMCP() {
    return ::GetOEMCP();
}

std::int32_t WideCharToMultiByte(std::uint32_t codePage, std::uint32_t flags, const char16_t* text, std::int32_t length,
                                 char* buffer, std::int32_t size) {
    return ::WideCharToMultiByte(codePage, flags, Wide(text), length, buffer, size, nullptr, nullptr);
}

std::int32_t MultiByteToWideChar(std::uint32_t codePage, std::uint32_t flags, const char* text, std::int32_t length,
                                 char16_t* buffer, std::int32_t size) {
    return ::MultiByteToWideChar(codePage, flags, text, length, Wide(buffer), size);
}

std::uint32_t FormatMessage(std::uint32_t flags, std::uint32_t code, std::uint32_t language, char16_t*& text) {
    text = nullptr;
    return ::FormatMessageW(flags, nullptr, code, language, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
}

void LocalFree(void* buffer) {
    ::LocalFree(buffer);
}

void SetUserLocale() {
    std::setlocale(LC_ALL, "");
}

std::int32_t wcsicmp(const char16_t* a, const char16_t* b) {
    return ::_wcsicmp(Wide(a), Wide(b));
}

std::int32_t wcsnicmp(const char16_t* a, const char16_t* b, std::int32_t count) {
    return ::_wcsnicmp(Wide(a), Wide(b), static_cast<std::size_t>(count));
}

char16_t towlower(char16_t c) {
    return static_cast<char16_t>(::towlower(c));
}

char16_t towupper(char16_t c) {
    return static_cast<char16_t>(::towupper(c));
}

bool iswspace(char16_t c) {
    return ::iswspace(c) != 0;
}

std::int32_t wcstol(const char16_t* text, const char16_t*& end, std::int32_t radix) {
    wchar_t* behind = nullptr;
    const long number = ::wcstol(Wide(text), &behind, radix);
    end = text + (behind - Wide(text));
    return number;
}

} // namespace Platform
