// The conversions between UTF-16 and the code pages. Everything here holds on both systems but for the rows that say
// otherwise.
#include "platform/inc/lasterror.h"
#include "platform/inc/text.h"
#include "tests/support/text.h"
#include <algorithm>
#include <cstdio>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <vector>

using namespace Platform;

namespace {

constexpr std::uint32_t Precomposed = 0x1;
constexpr std::uint32_t Composite = 0x2;
constexpr std::uint32_t Invalid = 0x8; // MB_ERR_INVALID_CHARS
constexpr std::uint32_t ToWide = Precomposed | Invalid;
constexpr std::uint32_t DiscardMarks = 0x10;
constexpr std::uint32_t DefaultForMarks = 0x40;
constexpr std::uint32_t InvalidUnits = 0x80; // WC_ERR_INVALID_CHARS
constexpr std::uint32_t NoBestFit = 0x400;
constexpr std::uint32_t ToBytes = 0x220; // WC_COMPOSITECHECK and WC_SEPCHARS

#ifdef _WIN32
constexpr bool UnderWine = true;
#else
constexpr bool UnderWine = false;
#endif
enum class Wine { Agrees, Differs }; // Differs: the row is what Windows documents

template <class TUnit>
struct Result {
    std::basic_string<TUnit> text;
    std::uint32_t error = 0;
};

std::int32_t Convert(std::uint32_t page, std::uint32_t flags, std::u16string_view text, char* buffer,
                     std::int32_t size) {
    return WideCharToMultiByte(page, flags, text.data(), static_cast<std::int32_t>(text.size()), buffer, size);
}
std::int32_t Convert(std::uint32_t page, std::uint32_t flags, std::string_view text, char16_t* buffer,
                     std::int32_t size) {
    return MultiByteToWideChar(page, flags, text.data(), static_cast<std::int32_t>(text.size()), buffer, size);
}

// Asks for the size, converts into exactly that, and sees one unit less refused.
template <class TTo, class TFrom>
Result<TTo> Converted(std::uint32_t page, std::uint32_t flags, std::basic_string_view<TFrom> text) {
    SetLastError(ErrorSuccess);
    const std::int32_t size = Convert(page, flags, text, static_cast<TTo*>(nullptr), 0);
    if (size <= 0) {
        TTo unused[1024]; // room for any text of this file
        const std::uint32_t error = GetLastError();
        EXPECT_EQ(Convert(page, flags, text, unused, 1024), 0);
        EXPECT_EQ(GetLastError(), error);
        return {{}, error};
    }
    std::vector<TTo> buffer(static_cast<std::size_t>(size));
    EXPECT_EQ(Convert(page, flags, text, buffer.data(), size), size);
    EXPECT_EQ(GetLastError(), ErrorSuccess);
    if (size > 1) {
        std::vector<TTo> small(static_cast<std::size_t>(size - 1));
        EXPECT_EQ(Convert(page, flags, text, small.data(), size - 1), 0);
        EXPECT_EQ(GetLastError(), ErrorInsufficientBuffer);
    }
    return {{buffer.begin(), buffer.end()}, 0};
}

std::string Hex(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        char digits[4];
        snprintf(digits, sizeof(digits), "%02X ", static_cast<unsigned>(static_cast<unsigned char>(byte)));
        text += digits;
    }
    return text;
}

} // namespace

TEST(CodePages, ToBytes) {
    struct Row {
        const char* name;
        std::uint32_t page, flags;
        std::u16string_view text;
        std::string_view bytes;
        std::uint32_t error = 0;
        Wine wine = Wine::Agrees;
    };
    using namespace std::literals;
    // clang-format off
    static constexpr Row rows[] = {
        {"letters", 1252, ToBytes, u"Gr\u00FC\u00DFe \u20AC", "Gr\xFC\xDF" "e \x80"},
        {"embedded terminator", 1252, ToBytes, u"a\0b"sv, "a\0b"sv},
        {"best fit refused", 1252, ToBytes | NoBestFit, u"a\u0100", "a?"},
        {"one mark a unit of a pair", 1252, ToBytes, u"\U0001F600", "??"},
        {"lone surrogates", 932, ToBytes, u"\xDE00" u"a\xD83D", "?a?"},
        {"decomposed", 1252, ToBytes, u"A\u0308b", "\xC4" "b"},
        {"decomposed, without the check", 1252, 0, u"A\u0308b", "A\xA8" "b"},
        {"second mark stands alone", 1252, ToBytes, u"u\u0308\u0304", "\xFC\xAF"},
        {"composed and fitted", 1252, ToBytes, u"a\u030C", "a"},
        {"composed only if exact", 1252, ToBytes | NoBestFit, u"a\u030C", "a?"},
        {"no such composition", 1252, ToBytes, u"Q\u0308", "Q\xA8"},
        {"composed Cyrillic and Greek", 1251, ToBytes, u"\u0438\u0306\u0438\u0301", "\xE9\xE8?"},
        {"vietnamese keeps its marks", 1258, ToBytes, u"e\u0302\u0301", "\xEA\xEC"},
        {"hebrew points", 1255, ToBytes, u"\u05E9\u05C1\u05BA", "\xF9\xD1\xCA"},
        {"mark dropped", 1252, 0x200 | DiscardMarks, u"\u0391\u0301", "?"},
        {"mark dropped, letter stays", 932, 0x200 | DiscardMarks, u"\u0391\u0301", "\x83\x9F"},
        {"mark makes it the default", 932, 0x200 | DefaultForMarks, u"\u0391\u0301x", "?x"},
        {"voiced kana", 932, ToBytes, u"\u304B\u3099", "\x82\xAA"},
        {"UTF-8", 65001, 0, u"a\u00E9\u20AC\U0001F600z", "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z"},
        {"UTF-8 of lone surrogates", 65001, 0, u"\xDC00\xD800" u"a", "\xEF\xBF\xBD\xEF\xBF\xBD" "a"},
        {"UTF-8, lone surrogate refused", 65001, InvalidUnits, u"a\xD800", "", ErrorNoUnicodeTranslation},
        {"UTF-8 takes no marks", 65001, ToBytes, u"a", "", ErrorInvalidFlags, Wine::Differs},
        {"UTF-7 takes no flags", 65000, ToBytes, u"a", "", ErrorInvalidFlags},
        {"UTF-7", 65000, 0, u"a \u00E9", "a +AOk-"},
        {"unknown flag", 1252, 0x100, u"a", "", ErrorInvalidFlags},
        {"empty", 1252, 0, u"", "", ErrorInvalidParameter},
        {"unknown page", 4711, 0, u"a", "", ErrorInvalidParameter},
        {"UTF-16 is no page of bytes", 1200, 0, u"a", "", ErrorInvalidParameter},
        {"JIS", 50221, 0, u"a\u3042b", "a\x1B$B$\"\x1B(Bb", 0, Wine::Differs},
        {"JIS of what it lacks", 50220, 0, u"\u3042\u0E01\u3042", "\x1B$B$\"\x1B(B?\x1B$B$\"\x1B(B", 0, Wine::Differs},
        {"GB 18030", 54936, 0, u"\u4E2D\U0001F600\xD800", "\xD6\xD0\x94\x39\xFC\x36?", 0, Wine::Differs},
    };
    // clang-format on
    for (const Row& row : rows) {
        if (!UnderWine || row.wine == Wine::Agrees) {
            SCOPED_TRACE(row.name);
            const Result<char> result = Converted<char>(row.page, row.flags, row.text);
            EXPECT_EQ(Hex(result.text), Hex(row.bytes));
            EXPECT_EQ(result.error, row.error);
        }
    }
}

TEST(CodePages, ToWide) {
    struct Row {
        const char* name;
        std::uint32_t page, flags;
        std::string_view bytes;
        std::u16string_view text;
        std::uint32_t error = 0;
        Wine wine = Wine::Agrees;
    };
    using namespace std::literals;
    static constexpr Row rows[] = {
        {"letters", 1252, ToWide,
         "Gr\xFC\xDF"
         "e\x80",
         u"Gr\u00FC\u00DFe\u20AC"},
        {"undefined letter byte refused", 1253, ToWide, "a\xD2", u"", ErrorNoUnicodeTranslation},
        {"decomposed", 1252, Composite, "\xC4x", u"A\u0308x"},
        {"marks stay as they are", 1258, ToWide, "\xC2\xEC", u"\u00C2\u0301"},
        {"hebrew point", 1255, ToWide, "\xCA\xE0", u"\u05BA\u05D0"},
        {"ascii drops the high bit", 20127, 0, "a\xC1", u"aA"},
        {"embedded terminator", 932, ToWide, "\x82\xA0\0b"sv, u"\u3042\0b"sv},
        {"truncated at the end", 932, 0, "a\x82", u"a\u30FB"},
        {"truncated at the end, refused", 932, ToWide, "a\x82", u"", ErrorNoUnicodeTranslation},
        {"truncated before a terminator", 932, 0, "\x82\0b"sv, u"\u30FB\0b"sv},
        {"pair without a meaning", 932, 0, "\x82\x20z", u"\u30FBz"},
        {"the replacement itself is valid", 932, ToWide, "\x81\x45", u"\u30FB"},
        {"voiced kana decomposed", 932, Composite, "\x82\xAA", u"\u304B\u3099"},
        {"lone byte", 936, ToWide, "\xFF", u"", ErrorNoUnicodeTranslation},
        {"truncated hangul", 949, 0, "\xB0\xA1\xB0", u"\uAC00?"},
        {"UTF-8", 65001, 0, "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z", u"a\u00E9\u20AC\U0001F600z"},
        {"UTF-8 cut short", 65001, 0, "\xE1\x80\xC2z\xF0\x90\x80", u"\uFFFD\uFFFDz\uFFFD"},
        {"UTF-8 overlong", 65001, 0, "\xC0\x80\xE0\x80\x80\xF0\x80\x80\x80",
         u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"UTF-8 surrogate", 65001, 0, "\xED\xA0\x80", u"\uFFFD\uFFFD"},
        {"UTF-8 too large", 65001, 0, "\xF4\x90\x80\x80\xF5", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"UTF-8 malformed, refused", 65001, Invalid, "abcdefgh\xFFijk", u"", ErrorNoUnicodeTranslation},
        {"UTF-8 refuses other flags", 65001, ToWide, "a", u"", ErrorInvalidFlags, Wine::Differs},
        {"UTF-7 refuses flags", 65000, Invalid, "a", u"", ErrorInvalidFlags},
        {"UTF-7", 65000, 0, "a +AOk-", u"a \u00E9"},
        {"unknown flag", 1252, 0x10, "a", u"", ErrorInvalidFlags},
        {"empty", 65001, 0, "", u"", ErrorInvalidParameter},
        {"empty comes before the flags", 1252, 0x10, "", u"", ErrorInvalidParameter},
        {"unknown page", 4711, 0, "a", u"", ErrorInvalidParameter},
        {"UTF-16 is no page of bytes", 1201, 0, "aa", u"", ErrorInvalidParameter},
        {"JIS", 50220, 0, "a\x1B$B$\"\x1B(Bb", u"a\u3042b", 0, Wine::Differs},
        {"GB 18030", 54936, 0, "\xD6\xD0\x94\x39\xFC\x36\xFF!", u"\u4E2D\U0001F600\uFFFD!", 0, Wine::Differs},
        {"GB 18030 refused", 54936, Invalid, "\xD6\xD0\xFF", u"", ErrorNoUnicodeTranslation, Wine::Differs},
    };
    for (const Row& row : rows) {
        if (!UnderWine || row.wine == Wine::Agrees) {
            SCOPED_TRACE(row.name);
            const Result<char16_t> result = Converted<char16_t>(row.page, row.flags, row.bytes);
            EXPECT_EQ(Readable(result.text), Readable(row.text));
            EXPECT_EQ(result.error, row.error);
        }
    }
}

TEST(CodePages, ArgumentsAndTerminators) {
    char bytes[8] = {};
    char16_t units[8] = {};
    EXPECT_EQ(WideCharToMultiByte(1252, 0, u"ab", -1, bytes, 8), 3);
    EXPECT_STREQ(bytes, "ab");
    EXPECT_EQ(MultiByteToWideChar(65001, 0, "\xC3\xA9", -1, units, 8), 2);
    EXPECT_EQ(units[0], u'\u00E9');
    const std::int32_t refused[] = {
        WideCharToMultiByte(1252, 0, nullptr, 1, bytes, 8), WideCharToMultiByte(1252, 0, u"a", 1, nullptr, 8),
        WideCharToMultiByte(65001, 0, u"a", 1, bytes, -1),  MultiByteToWideChar(1252, 0, nullptr, 1, units, 8),
        MultiByteToWideChar(65001, 0, "a", 1, nullptr, 8),  MultiByteToWideChar(1252, 0, "a", 1, units, -1),
    };
    for (const std::int32_t result : refused) {
        EXPECT_EQ(result, 0);
    }
    EXPECT_EQ(GetLastError(), ErrorInvalidParameter);
    // Invalid text is what counts, not that it wouldn't fit.
    EXPECT_EQ(MultiByteToWideChar(1253, Invalid, "abc\xD2", 4, units, 1), 0);
    EXPECT_EQ(GetLastError(), ErrorNoUnicodeTranslation);
}

namespace {

class Digest {
public:
    template <class TUnit>
    void Add(const TUnit* units, std::int32_t count) {
        for (std::int32_t i = 0; i < count; ++i) {
            value = (value ^ static_cast<std::make_unsigned_t<TUnit>>(units[i])) * 16777619u;
        }
        value = (value ^ 0x10000u) * 16777619u;
    }
    std::uint32_t value = 2166136261u;
};

std::uint32_t DigestToBytes(std::uint32_t page) {
    Digest digest;
    for (std::uint32_t c = 0; c < 0x10000; ++c) {
        const auto unit = static_cast<char16_t>(c);
        for (const std::uint32_t flags : {ToBytes, NoBestFit}) {
            char bytes[4];
            digest.Add(bytes, WideCharToMultiByte(page, flags, &unit, 1, bytes, 4));
        }
    }
    return digest.value;
}

std::uint32_t DigestToWide(std::uint32_t page, unsigned firstLead) {
    Digest digest;
    for (unsigned lead = 0; lead < 256; ++lead) {
        for (unsigned trail = 0; trail < (lead >= firstLead ? 256u : 1u); ++trail) {
            const char bytes[] = {static_cast<char>(lead), static_cast<char>(trail)};
            for (const std::uint32_t flags : {0u, ToWide}) {
                char16_t units[4];
                digest.Add(units, MultiByteToWideChar(page, flags, bytes, lead >= firstLead ? 2 : 1, units, 4));
            }
        }
    }
    return digest.value;
}

} // namespace

// Every character and every byte or pair of bytes of a page by itself, in one number each: what a wrong table anywhere
// would change. The rows above are for what comes of several.
TEST(CodePages, WholePages) {
    struct Row {
        std::uint32_t page, toBytes, toWide;
        unsigned firstLead = 256;
    };
    static constexpr Row rows[] = {
        {437, 0x0A29F3EA, 0x3EA34CCD},       {850, 0x62DF79A2, 0xF3666BCD},       {852, 0xB97D8764, 0x152E9BA5},
        {855, 0x4DC2B3DD, 0x9BCD50AD},       {857, 0xC172D4BE, 0x815B9C25},       {866, 0x1F69CA71, 0xF642CF45},
        {874, 0x3BB0E214, 0xDC11CF4D},       {932, 0xB98CA5F3, 0x78C91E99, 0x81}, {936, 0x919B17E9, 0x685B29FA, 0x81},
        {949, 0xEB09BF32, 0xCC9D282A, 0x81}, {950, 0xCD1E8A9F, 0xB396EDDB, 0x81}, {1250, 0xE6C86BA0, 0x78C99E05},
        {1251, 0x8F929B15, 0xB2A4B2E5},      {1252, 0xD9ABB889, 0xC755DD85},      {1253, 0xE93B8FB5, 0x175AE8C3},
        {1254, 0x6513776B, 0xEA097725},      {1255, 0x8F1C15A8, 0x6FAB08BA},      {1256, 0xF67C6D7B, 0x5859711D},
        {1257, 0x5898373A, 0x8B9EBA02},      {1258, 0x2172433A, 0x0739DA3D},      {20866, 0x53DD3F1E, 0x68179ED5},
        {28591, 0x5A6A1F91, 0xCF5C6DC5},     {28592, 0xF089A708, 0xA9C2FDED},     {28593, 0xC1C58188, 0xFDF32E9B},
        {28594, 0x7135D588, 0x920B89A5},     {28595, 0x34442C30, 0x91218325},     {28596, 0xE1EEAB6B, 0x724969B7},
        {28599, 0xC9AB2A4A, 0x5D27793D},     {28605, 0xEB4DD4AF, 0x740E4B15},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.page);
        EXPECT_EQ(DigestToBytes(row.page), row.toBytes);
        EXPECT_EQ(DigestToWide(row.page, row.firstLead), row.toWide);
    }
}

TEST(CodePages, FirstUseFromSeveralThreads) {
    std::vector<std::string> results(4);
    std::vector<std::thread> threads;
    for (std::string& result : results) {
        threads.emplace_back(
            [&result] { result = Converted<char>(1361, 0, std::u16string_view(u"\uAC00\u00C4")).text; });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const std::string& result : results) {
        EXPECT_EQ(Hex(result), "88 61 3F ");
    }
}

namespace {

// The plain way: character by character, with each range worked out from the values that are still possible.
struct PlainUtf8 {
    std::u16string text;
    bool valid = true;

    explicit PlainUtf8(std::string_view bytes) {
        while (!bytes.empty()) {
            bytes.remove_prefix(Take(bytes));
        }
    }

private:
    std::size_t Take(std::string_view bytes) {
        const unsigned lead = static_cast<unsigned char>(bytes[0]);
        const std::size_t length = lead < 0x80   ? 1
                                   : lead < 0xC0 ? 0
                                   : lead < 0xE0 ? 2
                                   : lead < 0xF0 ? 3
                                   : lead < 0xF8 ? 4
                                                 : 0;
        constexpr char32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
        char32_t c = length < 2 ? lead : lead & (0x7Fu >> length);
        std::size_t taken = 1;
        for (;; ++taken) {
            const auto open = static_cast<unsigned>(6 * (length - taken));
            const char32_t low = length == 0 ? 0 : c << open;
            const char32_t high = length == 0 ? 0 : low | ((char32_t{1} << open) - 1);
            const bool possible =
                length != 0 && high >= least[length] && low <= 0x10FFFF && !(low >= 0xD800 && high <= 0xDFFF);
            if (possible && taken == length) {
                return Put(c), length;
            }
            if (!possible || taken == bytes.size() || (static_cast<unsigned char>(bytes[taken]) & 0xC0) != 0x80) {
                valid = false;
                return text.push_back(u'\uFFFD'), taken;
            }
            c = c << 6 | (static_cast<unsigned char>(bytes[taken]) & 0x3F);
        }
    }
    void Put(char32_t c) {
        if (c > 0xFFFF) {
            text.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
            c = 0xDC00 + ((c - 0x10000) & 0x3FF);
        }
        text.push_back(static_cast<char16_t>(c));
    }
};

// Runs of one kind of byte or unit, some of them malformed, so that whole blocks and their edges both occur.
template <class TUnit>
std::basic_string<TUnit> RandomText(std::mt19937& random, const std::vector<std::basic_string<TUnit>>& pieces) {
    std::basic_string<TUnit> text;
    for (auto runs = 1 + random() % 12; runs > 0; --runs) {
        const auto& piece = pieces[random() % pieces.size()];
        for (auto count = 1 + random() % 9; count > 0; --count) {
            text += piece;
        }
    }
    return text;
}

} // namespace

TEST(CodePages, Utf8AgainstAPlainDecoder) {
    constexpr unsigned seed = 20260;
    std::mt19937 random(seed);
    const std::vector<std::string> pieces = {
        "a",    "Zz",   "\xC3\xA9", "\xD0\x96", "\xE2\x82\xAC", "\xED\x9F\xBF", "\xF0\x9F\x98\x80",
        "\x80", "\xBF", "\xC1",     "\xC2",     "\xE0",         "\xE0\x9F",     "\xED\xA0",
        "\xED", "\xF0", "\xF0\x8F", "\xF4\x8F", "\xF4\x90",     "\xF5",         "\xFF"};
    for (int round = 0; round < 20000; ++round) {
        // Wine takes what follows a lead byte for cut off when the text ends within the lead byte's length.
        const std::string bytes = RandomText<char>(random, pieces) + (UnderWine ? "..." : "");
        const PlainUtf8 plain(bytes);
        const Result<char16_t> result = Converted<char16_t>(CodePageUtf8, 0, std::string_view(bytes));
        ASSERT_EQ(Readable(result.text), Readable(plain.text))
            << "seed " << seed << ", round " << round << ": " << Hex(bytes);
        const Result<char16_t> strict = Converted<char16_t>(CodePageUtf8, Invalid, std::string_view(bytes));
        ASSERT_EQ(strict.error, plain.valid ? 0 : ErrorNoUnicodeTranslation) << Hex(bytes);
    }
}

TEST(CodePages, Utf8OfRandomUnits) {
    constexpr unsigned seed = 20261;
    std::mt19937 random(seed);
    const std::vector<std::u16string> pieces = {u"a",      u"\x7F",   u"\x80",       u"\u00E9", u"\u0416", u"\u07FF",
                                                u"\u0800", u"\uFFFF", u"\U0001F600", u"\xD83D", u"\xDE00"};
    for (int round = 0; round < 20000; ++round) {
        const std::u16string text = RandomText<char16_t>(random, pieces);
        std::u16string repaired = text;
        for (std::size_t i = 0; i < text.size(); ++i) {
            const bool high = (text[i] & 0xFC00) == 0xD800;
            if (high && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00) {
                ++i;
            } else if ((text[i] & 0xF800) == 0xD800) {
                repaired[i] = u'\uFFFD';
            }
        }
        const Result<char> result = Converted<char>(CodePageUtf8, 0, std::u16string_view(text));
        const PlainUtf8 plain(result.text);
        ASSERT_TRUE(plain.valid) << Readable(text);
        ASSERT_EQ(Readable(plain.text), Readable(repaired)) << "seed " << seed << ", round " << round;
        const Result<char> strict = Converted<char>(CodePageUtf8, InvalidUnits, std::u16string_view(text));
        ASSERT_EQ(strict.error, repaired == text ? 0 : ErrorNoUnicodeTranslation) << Readable(text);
    }
}
