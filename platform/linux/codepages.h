// The code pages that the conversions know: their numbers, the C library's names for them, and where the pages' own
// arrangement differs from that of the C library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Platform {

enum class PageKind {
    Utf8,
    Table, // each character one byte or two; converted by tables
    Stream // shifts or longer characters; converted by the C library
};

struct CodePage {
    std::uint32_t number;
    PageKind kind;
    const char* converter;      // the name for iconv_open; in streams of what is read
    const char* writer;         // the name for what is written, where it differs; else null
    std::string_view leadBytes; // first and last lead byte of each range of double bytes
    char16_t undefinedStart;    // undefined bytes from A0 on become private characters from here; 0 if there are none
    char16_t unmapped;          // what an undefined pair of bytes becomes
};

/// Null for a page that is not known, also for those that Windows keeps out of its conversions (UTF-16, UTF-32).
/// 0, 1 and 3 stand for the system's and the thread's pages, 2 for the Macintosh page.
const CodePage* FindCodePage(std::uint32_t number);

/// The row's place among all of them.
std::size_t CodePageIndex(const CodePage& page);
constexpr std::size_t MostCodePages = 64;

} // namespace Platform
