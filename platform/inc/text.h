// Code pages, error texts, and the run-time's character operations.
#pragma once

#include <cstdint>

namespace Platform {

constexpr std::uint32_t CodePageUtf8 = 65001; // CP_UTF8

/// The system's ANSI and OEM code pages; both 65001 on Linux, whatever the locale.
std::uint32_t GetACP();
std::uint32_t GetOEMCP();

/// Converts `length` characters (-1: a terminated text, terminator included) to bytes of a code page. With `size` 0
/// only the size needed is returned. 0 on failure. What the page cannot express becomes its default character, '?'
/// (U+FFFD's bytes in UTF-8). On Linux the pages other than UTF-8 are those of iconv; flags about combining and similar
/// characters have no effect there.
std::int32_t WideCharToMultiByte(std::uint32_t codePage, std::uint32_t flags, const char16_t* text, std::int32_t length,
                                 char* buffer, std::int32_t size);
/// The way back. Bytes that mean nothing in the page become its default character (U+FFFD in UTF-8); on Linux it is '?'
/// in every other page.
std::int32_t MultiByteToWideChar(std::uint32_t codePage, std::uint32_t flags, const char* text, std::int32_t length,
                                 char16_t* buffer, std::int32_t size);

constexpr std::uint32_t FormatMessageAllocateBuffer = 0x100; // FORMAT_MESSAGE_ALLOCATE_BUFFER
constexpr std::uint32_t FormatMessageIgnoreInserts = 0x200;  // FORMAT_MESSAGE_IGNORE_INSERTS
constexpr std::uint32_t FormatMessageFromSystem = 0x1000;    // FORMAT_MESSAGE_FROM_SYSTEM

/// The system's text for an error code, line end included, in a buffer of the system's that the caller gives back to
/// LocalFree. `flags` must allocate the buffer and take the text from the system. Returns the length; 0 if there is no
/// text, or if it has inserts that are not to be ignored, for none are given.
std::uint32_t FormatMessage(std::uint32_t flags, std::uint32_t code, std::uint32_t language, char16_t*& text);
/// Frees a buffer that a function of the system allocated.
void LocalFree(void* buffer);

/// The run-time's setlocale with the user's locale, of all categories: from here on the operations below know letters
/// beyond ASCII, and wcsftime uses LC_TIME. On Linux LC_CTYPE alone is set where another category is not installed.
void SetUserLocale();

/// Compares without regard to case, as _wcsicmp and _wcsnicmp do; the sign of the result is the order. Until
/// SetUserLocale they all fold A to Z alone. From then on the locale counts on Windows; on Linux letters fold as in the
/// invariant tables of Windows in every locale, for names are compared and hashed by this.
std::int32_t wcsicmp(const char16_t* a, const char16_t* b);
std::int32_t wcsnicmp(const char16_t* a, const char16_t* b, std::int32_t count);
char16_t towlower(char16_t c);
char16_t towupper(char16_t c);
/// Any white space of Unicode, whatever the locale.
bool iswspace(char16_t c);

/// The number that a text begins with behind white space and a sign, in decimal digits, which may be of different
/// scripts; `end` is set behind it, or to `text` if there is none. Sets errno to ERANGE, and gives the nearest number,
/// for one out of range; errno is kept otherwise. `radix` must be 10. White space and digits are the run-time's of
/// Windows, whatever the locale.
std::int32_t wcstol(const char16_t* text, const char16_t*& end, std::int32_t radix);

} // namespace Platform
