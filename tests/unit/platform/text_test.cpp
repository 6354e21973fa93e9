// What both systems make of texts: code pages, letters, references to the environment.
#include "platform/inc/environment.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/text.h"
#include "tests/unit/platform/scratchfolder.h"
#include <clocale>
#include <cstdlib>
#include <random>
#include <vector>

using namespace Platform;
using namespace std::literals;

namespace {

constexpr std::uint32_t Invalid = 0x8;       // MB_ERR_INVALID_CHARS
constexpr std::uint32_t InvalidUnits = 0x80; // WC_ERR_INVALID_CHARS
constexpr std::uint32_t ToWide = 0x9;        // with MB_PRECOMPOSED
constexpr std::uint32_t ToBytes = 0x220;     // WC_COMPOSITECHECK and WC_SEPCHARS

std::int32_t Convert(std::uint32_t page, std::uint32_t flags, std::u16string_view text, char* buffer,
                     std::int32_t size) {
    return WideCharToMultiByte(page, flags, text.data(), static_cast<std::int32_t>(text.size()), buffer, size);
}
std::int32_t Convert(std::uint32_t page, std::uint32_t flags, std::string_view text, char16_t* buffer,
                     std::int32_t size) {
    return MultiByteToWideChar(page, flags, text.data(), static_cast<std::int32_t>(text.size()), buffer, size);
}

// Asks for the size, converts into exactly that, and sees one unit less refused.
template <class TFrom, class TTo>
struct Row {
    const char* name;
    std::uint32_t page, flags;
    std::basic_string_view<TFrom> text;
    std::basic_string_view<TTo> result;
    std::uint32_t error = 0;
    Wine wine = Wine::AsWindows;

    void Check() const {
        Claim(wine, name, [this] {
            SetLastError(ErrorSuccess);
            const std::int32_t size = Convert(page, flags, text, static_cast<TTo*>(nullptr), 0);
            EXPECT_EQ(GetLastError(), error) << name;
            std::vector<TTo> found(1024);
            EXPECT_EQ(Convert(page, flags, text, found.data(), size > 0 ? size : 1024), size) << name;
            EXPECT_EQ(GetLastError(), error) << name;
            EXPECT_EQ(Readable(std::u16string(found.data(), found.data() + size)),
                      Readable(std::u16string(result.begin(), result.end())))
                << name;
            EXPECT_TRUE(size == 0 || found[static_cast<std::size_t>(size)] == TTo{}) << name;
            if (size > 1) {
                EXPECT_EQ(Convert(page, flags, text, found.data(), size - 1), 0) << name;
                EXPECT_EQ(GetLastError(), ErrorInsufficientBuffer) << name;
            }
        });
    }
};

// clang-format off
constexpr Row<char16_t, char> ToBytesRows[] = {
    {"letters", 1252, ToBytes, u"Gr\u00FC\u00DFe \u20AC", "Gr\xFC\xDF" "e \x80"},
    {"embedded terminator", 1252, ToBytes, u"a\0b"sv, "a\0b"sv},
    {"one default character a unit of a pair", 1252, 0x400, u"\U0001F600", "??"},
    {"lone surrogates", 932, ToBytes, u"\xDE00" u"a\xD83D", "?a?"},
    {"UTF-8 of lone surrogates", 65001, 0, u"\xDC00\xD800" u"a", "\xEF\xBF\xBD\xEF\xBF\xBD" "a"},
    {"UTF-8, lone surrogate refused", 65001, InvalidUnits, u"a\xD800", "", ErrorNoUnicodeTranslation},
    {"UTF-8 takes no marks", 65001, ToBytes, u"a", "", ErrorInvalidFlags, Wine::Otherwise},
    {"UTF-7 takes no flags", 65000, ToBytes, u"a", "", ErrorInvalidFlags},
    {"UTF-7", 65000, 0, u"a \u00E9", "a +AOk-"},
    {"unknown flag", 1252, 0x100, u"a", "", ErrorInvalidFlags},
    {"empty", 1252, 0, u"", "", ErrorInvalidParameter},
    {"unknown page", 4711, 0, u"a", "", ErrorInvalidParameter},
    {"JIS of what it lacks", 50220, 0, u"\u3042\u0E01\u3042", "\x1B$B$\"\x1B(B?\x1B$B$\"\x1B(B", 0, Wine::Otherwise},
    {"GB 18030", 54936, 0, u"\u4E2D\U0001F600\xD800", "\xD6\xD0\x94\x39\xFC\x36?", 0, Wine::Otherwise},
    {"GB 18030 refuses", 54936, InvalidUnits, u"\xD800", "", ErrorNoUnicodeTranslation, Wine::Otherwise},
    {"Macintosh", 2, 0, u"\u00C4", "\x80", 0, Wine::Otherwise},
    {"ASCII", 20127, 0, u"a\u3042", "a?", 0, Wine::Otherwise},
    {"KOI8-R", 20866, 0, u"\u044E\u2553", "\xC0\xA4", 0, Wine::Otherwise},
    {"KOI8-U", 21866, 0, u"\u044E\u0454", "\xC0\xA4", 0, Wine::Otherwise},
    {"EUC-JP", 51932, 0, u"\u3042", "\xA4\xA2", 0, Wine::Otherwise},
    {"EUC-CN", 51936, 0, u"\u4E2D", "\xD6\xD0", 0, Wine::Otherwise},
    {"EUC-KR", 51949, 0, u"\uAC00", "\xB0\xA1", 0, Wine::Otherwise},
    {"half-width kana in JIS", 50221, 0, u"\uFF71", "\x1B(I1\x1B(B", 0, Wine::Otherwise},
    {"ISO 2022 of Korea", 50225, 0, u"\uAC00", "\x1B$)C\x0E" "0!\x0F", 0, Wine::Otherwise},
    {"ISO 2022 of China", 50227, 0, u"\u4E2D", "\x1B$)A\x0EVP\x0F", 0, Wine::Otherwise},
    {"Latin 1", 28591, 0, u"\u00A4\u00D0", "\xA4\xD0", 0, Wine::Otherwise},
    {"Latin 2", 28592, 0, u"\u0104", "\xA1", 0, Wine::Otherwise},
    {"Latin 9", 28605, 0, u"\u20AC", "\xA4", 0, Wine::Otherwise},
    {"Latin 10", 28606, 0, u"\u0218", "\xAA", 0, Wine::Otherwise},
    {"behind them", 28607, 0, u"a", "", ErrorInvalidParameter},
};
constexpr Row<char, char16_t> ToWideRows[] = {
    {"letters", 1251, ToWide, "\xCF\xF0\xE8 \x88", u"\u041F\u0440\u0438 \u20AC"},
    {"undefined letter byte refused", 1253, ToWide, "a\xD2", u"", ErrorNoUnicodeTranslation},
    {"truncated, refused", 932, ToWide, "a\x82", u"", ErrorNoUnicodeTranslation},
    {"truncated", 949, 0, "\xB0\xA1\xB0", u"\uAC00?"},
    {"UTF-8 cut short", 65001, 0, "\xE1\x80\xC2z\xF0\x90\x80", u"\uFFFD\uFFFDz\uFFFD"},
    {"UTF-8 malformed, refused", 65001, Invalid, "abcdefgh\xFFijk", u"", ErrorNoUnicodeTranslation},
    {"UTF-8 refuses other flags", 65001, ToWide, "a", u"", ErrorInvalidFlags, Wine::Otherwise},
    {"unknown flag", 1252, 0x10, "a", u"", ErrorInvalidFlags},
    {"empty comes before the flags", 1252, 0x10, "", u"", ErrorInvalidParameter},
    {"unknown page", 4711, 0, "a", u"", ErrorInvalidParameter},
    {"GB 18030", 54936, 0, "\xD6\xD0\x94\x39\xFC\x36\xFF!", u"\u4E2D\U0001F600?!", 0, Wine::Otherwise},
};
// clang-format on

} // namespace

TEST(CodePages, ConvertBothWays) {
    std::for_each(std::begin(ToBytesRows), std::end(ToBytesRows), [](const auto& row) { row.Check(); });
    std::for_each(std::begin(ToWideRows), std::end(ToWideRows), [](const auto& row) { row.Check(); });
    char bytes[8] = {};
    char16_t units[8] = {};
    EXPECT_EQ(WideCharToMultiByte(1252, 0, u"ab", -1, bytes, 8), 3);
    EXPECT_STREQ(bytes, "ab");
    EXPECT_TRUE(MultiByteToWideChar(65001, 0, "\xC3\xA9", -1, units, 8) == 2 && units[0] == u'\u00E9');
    EXPECT_EQ(WideCharToMultiByte(1252, 0, nullptr, 1, bytes, 8), 0);
    EXPECT_EQ(MultiByteToWideChar(65001, 0, "a", 1, nullptr, 8) + MultiByteToWideChar(1252, 0, "a", 1, units, -1), 0);
    EXPECT_EQ(GetLastError(), ErrorInvalidParameter);
    EXPECT_EQ(MultiByteToWideChar(1253, Invalid, "abc\xD2", 4, units, 1), 0) << "and nothing fits";
    EXPECT_EQ(GetLastError(), ErrorNoUnicodeTranslation);
}

namespace {

enum class Way { Both, ToText, ToUtf8 }; // one way alone: malformed text, with a letter behind to end it
struct Piece {
    Way way;
    std::string_view bytes;
    std::u16string_view text;
};
// clang-format off
constexpr Piece Pieces[] = {
    {Way::Both, "a", u"a"}, {Way::Both, "\x7F", u"\x7F"}, {Way::Both, "\xC2\x80", u"\x80"},
    {Way::Both, "\xDF\xBF", u"\u07FF"}, {Way::Both, "\xE0\xA0\x80", u"\u0800"}, {Way::Both, "\xED\x9F\xBF", u"\uD7FF"},
    {Way::Both, "\xEF\xBF\xBF", u"\uFFFF"}, {Way::Both, "\xF0\x90\x80\x80", u"\U00010000"},
    {Way::Both, "\xF4\x8F\xBF\xBF", u"\U0010FFFF"}, {Way::ToText, "\x80\xBFz", u"\uFFFD\uFFFDz"},
    {Way::ToText, "\xC0\x80z", u"\uFFFD\uFFFDz"}, {Way::ToText, "\xC2z", u"\uFFFDz"},
    {Way::ToText, "\xE0\x9F\xBFz", u"\uFFFD\uFFFDz"}, {Way::ToText, "\xE2\x82z", u"\uFFFDz"},
    {Way::ToText, "\xED\xA0\x80z", u"\uFFFD\uFFFDz"}, {Way::ToText, "\xF0\x8F\x80\x80z", u"\uFFFD\uFFFD\uFFFDz"},
    {Way::ToText, "\xF1\x80\x80z", u"\uFFFDz"}, {Way::ToText, "\xF4\x90z", u"\uFFFDz"},
    {Way::ToText, "\xF5\xFFz", u"\uFFFD\uFFFDz"}, {Way::ToUtf8, "\xEF\xBF\xBDz", u"\xD83Dz"},
    {Way::ToUtf8, "\xEF\xBF\xBDz", u"\xDE00z"},
};
// clang-format on

} // namespace

// Runs of one kind of character, some of them malformed, so that whole blocks and their edges both occur.
TEST(CodePages, Utf8OfRandomRuns) {
    constexpr unsigned seed = 20260;
    std::mt19937 random(seed);
    for (int round = 0; round < 20000 && !HasFailure(); ++round) {
        const Way way = round % 2 ? Way::ToText : Way::ToUtf8;
        std::string bytes;
        std::u16string text;
        bool malformed = false;
        for (auto runs = 1 + random() % 12; runs > 0; --runs) {
            const Piece& piece = Pieces[random() % std::size(Pieces)];
            malformed = malformed || piece.way == way;
            for (auto count = piece.way == Way::Both || piece.way == way ? 1 + random() % 9 : 0; count > 0; --count) {
                bytes += piece.bytes;
                text += piece.text;
            }
        }
        bytes += "..."; // Wine takes what follows a lead byte for cut off when the text ends within its length
        text += u"...";
        for (const bool strict : {false, true}) {
            const std::uint32_t error = strict && malformed ? ErrorNoUnicodeTranslation : 0;
            if (way == Way::ToText) {
                const std::u16string_view result = error ? std::u16string_view() : text;
                Row<char, char16_t>{"to text", 65001, strict ? Invalid : 0, bytes, result, error}.Check();
            } else {
                const std::string_view result = error ? std::string_view() : bytes;
                Row<char16_t, char>{"to UTF-8", 65001, strict ? InvalidUnits : 0, text, result, error}.Check();
            }
        }
    }
}

TEST(Characters, FoldAsInTheInvariantTables) {
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(towlower(u'\u00C4'), u'\u00C4') << "before a locale is set";
    SetUserLocale();
    // With the capital first; a letter without a partner stands twice.
    constexpr std::u16string_view pairs = u"Ii\u00C4\u00E4\u0178\u00FF\u01C4\u01C6\u0391\u03B1\u0411\u0431\u10A0\u2D00"
                                          u"\u1F59\u1F51\u2160\u2170\uA77D\u1D79\uFF21\uFF41\u00B5\u00B5\u00D7\u00D7"
                                          u"\u00DF\u00DF\u0130\u0130\u0131\u0131\u017F\u017F\u01C5\u01C5\u1E9E\u1E9E";
    for (std::size_t i = 0; i < pairs.size(); i += 2) {
        EXPECT_TRUE(towlower(pairs[i]) == pairs[i + 1] && towupper(pairs[i + 1]) == pairs[i]) << i;
    }
    EXPECT_EQ(wcsicmp(u"stra\u00DFe \u00D6", u"STRA\u00DFE \u00F6"), 0);
    EXPECT_TRUE(wcsicmp(u"A", u"b") < 0 && wcsnicmp(u"ab", u"A", 2) > 0 && wcsnicmp(u"abc", u"ABd", 2) == 0);
    for (const char16_t c : u"\t \u00A0\u2007\u202F\u3000x\u200B\u2060"sv) {
        EXPECT_EQ(iswspace(c), c != u'x' && c != u'\u200B' && c != u'\u2060') << std::uint32_t{c};
    }
}

TEST(Environment, ReferencesAreExpanded) {
#ifdef _WIN32
    _putenv_s("TEST_NAME", "C:\\a b");
#else
    setenv("TEST_NAME", "C:\\a b", 1);
#endif
    const auto expanded = [](const std::u16string& text) {
        char16_t buffer[100] = {};
        const std::uint32_t size = ExpandEnvironmentStrings(text.c_str(), buffer, 100);
        EXPECT_EQ(size, std::u16string_view(buffer).size() + 1) << Readable(text);
        char16_t small[1];
        EXPECT_GE(ExpandEnvironmentStrings(text.c_str(), small, 1), size) << Readable(text);
        return Readable(buffer);
    };
    ExpectRows(expanded, {u"%TEST_NAME%\\c -> C:\\a b\\c", u"%test_Name%%TEST_NAME% -> C:\\a bC:\\a b", u"a% -> a%",
                          u" -> ", u"%TEST_NONE%\\%TEST_NAME% -> %TEST_NONE%\\C:\\a b",
                          u"100% of %TEST_NAME% -> 100% of %TEST_NAME%", u"100%% of %TEST_NAME% -> 100%% of C:\\a b"});
}
