#include "platform/linux/codepages.h"

#include "platform/inc/text.h"
#include <algorithm>
#include <cstddef>
#include <iterator>

namespace Platform {

namespace {

constexpr CodePage Utf8Page() {
    return {CodePageUtf8, PageKind::Utf8, nullptr, nullptr, {}, 0, u'?'};
}
constexpr CodePage Single(std::uint32_t number, const char* converter, char16_t undefinedStart = 0) {
    return {number, PageKind::Table, converter, nullptr, {}, undefinedStart, u'?'};
}
constexpr CodePage Double(std::uint32_t number, const char* converter, std::string_view leadBytes,
                          char16_t undefinedStart, char16_t unmapped = u'?') {
    return {number, PageKind::Table, converter, nullptr, leadBytes, undefinedStart, unmapped};
}
constexpr CodePage Stream(std::uint32_t number, const char* reader, const char* writer = nullptr) {
    return {number, PageKind::Stream, reader, writer, {}, 0, u'\uFFFD'};
}

constexpr CodePage Pages[] = {
    Utf8Page(),
    Single(437, "CP437"),
    Single(737, "CP737"),
    Single(775, "CP775"),
    Single(850, "CP850"),
    Single(852, "CP852"),
    Single(855, "CP855"),
    Single(857, "CP857", 0xF8BB),
    Single(858, "CP858"),
    Single(860, "CP860"),
    Single(861, "CP861"),
    Single(862, "CP862"),
    Single(863, "CP863"),
    Single(864, "CP864", 0xF8BE),
    Single(865, "CP865"),
    Single(866, "CP866"),
    Single(869, "CP869"),
    Single(874, "CP874", 0xF8C1),
    Double(932, "CP932", "\x81\x9F\xE0\xFC", 0xF8F0, u'\u30FB'),
    Double(936, "GBK", "\x81\xFE", 0xF8F5),
    Double(949, "UHC", "\x81\xFE", 0xF8F7),
    Double(950, "BIG5", "\x81\xFE", 0xF8F8),
    Single(1250, "CP1250"),
    Single(1251, "CP1251"),
    Single(1252, "CP1252"),
    Single(1253, "CP1253", 0xF8F9),
    Single(1254, "CP1254"),
    Single(1255, "CP1255", 0xF88D),
    Single(1256, "CP1256"),
    Single(1257, "CP1257", 0xF8FC),
    Single(1258, "CP1258"),
    Double(1361, "JOHAB", "\x84\xD3\xD8\xDE\xE0\xF9", 0xF8EC),
    Single(10000, "MACINTOSH", 0xF8FF),
    Single(20127, "US-ASCII"),
    Single(20866, "KOI8-R"),
    Single(21866, "KOI8-U"),
    Single(28591, "ISO-8859-1"),
    Single(28592, "ISO-8859-2"),
    Single(28593, "ISO-8859-3", 0xF7F5),
    Single(28594, "ISO-8859-4"),
    Single(28595, "ISO-8859-5"),
    Single(28596, "ISO-8859-6", 0xF7C8),
    Single(28597, "ISO-8859-7", 0xF7C2),
    Single(28598, "ISO-8859-8", 0xF79C),
    Single(28599, "ISO-8859-9"),
    Single(28603, "ISO-8859-13"),
    Single(28605, "ISO-8859-15"),
    // The wider converter reads half-width katakana too, which 50220 alone does not write.
    Stream(50220, "ISO-2022-JP-3", "ISO-2022-JP"),
    Stream(50221, "ISO-2022-JP-3"),
    Stream(50222, "ISO-2022-JP-3"),
    Stream(50225, "ISO-2022-KR"),
    Stream(50227, "ISO-2022-CN"),
    Stream(51932, "EUC-JP"),
    Stream(51936, "EUC-CN"),
    Stream(51949, "EUC-KR"),
    Stream(54936, "GB18030"),
    Stream(65000, "UTF-7"),
};
static_assert(std::size(Pages) <= MostCodePages);

// CP_ACP, CP_OEMCP, CP_MACCP and CP_THREAD_ACP.
std::uint32_t ResolveSelector(std::uint32_t number) {
    switch (number) {
    case 0:
    case 3:
        return GetACP();
    case 1:
        return GetOEMCP();
    case 2:
        return 10000;
    default:
        return number;
    }
}

} // namespace

const CodePage* FindCodePage(std::uint32_t number) {
    const std::uint32_t wanted = ResolveSelector(number);
    const auto* found = std::find_if(std::begin(Pages), std::end(Pages),
                                     [wanted](const CodePage& page) { return page.number == wanted; });
    return found == std::end(Pages) ? nullptr : found;
}

std::size_t CodePageIndex(const CodePage& page) {
    return static_cast<std::size_t>(&page - Pages);
}

} // namespace Platform
