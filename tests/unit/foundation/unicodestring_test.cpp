#include "foundation/inc/unicodestring.h"

#include "foundation/inc/format.h"
#include "platform/inc/text.h"
#include "tests/support/text.h"
#include <limits>

using namespace Tsx;

TEST(UnicodeString, SharesAndWritesAfterCopy) {
    CUnicodeString first(u"text");
    const CUnicodeString second(first);
    EXPECT_EQ(first.Text(), second.Text()) << "a copy shares the block";
    first.Append(u"!", 1);
    EXPECT_EQ(first + u' ' + second, u"text! text");
    CUnicodeString self(u"ab");
    for (int i = 0; i < 6; ++i) {
        self += self; // the source moves with the growth
    }
    EXPECT_EQ(self.Length(), 128);
    EXPECT_EQ(self.Right(3), u"bab");
    EXPECT_EQ(second.Mid(2, 0).Text(), CUnicodeString().Text()) << "empty parts share the empty block";
    first.GetBuffer(-1);
    first.SetLength(-1);
    EXPECT_EQ(first, u"");
    const char16_t* volatile none = nullptr; // of which no compiler draws conclusions
    EXPECT_EQ(none + (first += none) + none, none);
    EXPECT_GT(second.CompareNoCase(none), 0);
}

TEST(UnicodeString, ReadsNumbersAndSwitches) {
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    for (const auto& [text, expected] : {std::pair(u" 12\t", 12),
                                         {u"+\uFF17", 7},
                                         {u"-1", -1},
                                         {u"\u0661\u06F22", 122},
                                         {u"\u205F\u1816\u1040\u3000", 60},
                                         {u"2147483647", std::numeric_limits<std::int32_t>::max()},
                                         {u"-\u0F22\u0F21\u0F24\u0F27\u0F24\u0F28\u0F23\u0F26\u0F24\u0F28", least}}) {
        std::int32_t value = 0;
        EXPECT_TRUE(CUnicodeString(text).ToInt(value)) << Readable(text);
        EXPECT_EQ(value, expected) << Readable(text);
    }
    for (const char16_t* text :
         {u"2147483648", u"-2147483649", u"12a", u"", u"+-5", u"1 2", u"\u00B2", u"99999999999999999999"}) {
        std::int32_t value = 7;
        EXPECT_FALSE(CUnicodeString(text).ToInt(value)) << Readable(text);
        EXPECT_EQ(value, 7) << "as it was";
    }
    bool on = false;
    EXPECT_TRUE(CUnicodeString(u" YES ").ToBool(on) && on);
    EXPECT_TRUE(CUnicodeString(u"Off").ToBool(on) && !on);
    EXPECT_FALSE(CUnicodeString(u"2").ToBool(on));
    EXPECT_EQ(CUnicodeString::FromInt(least) + CUnicodeString::FromHex(0xDEADBEEF), u"-2147483648deadbeef");
    CUnicodeString spaced(u"\t\u00A0\u2003 a b \u3000\r\n");
    spaced.Trim();
    EXPECT_EQ(spaced, u"a b");
}

TEST(UnicodeString, ConvertsToCodePagesAndBack) {
    const CUnicodeString text(u"\u00FC\u043F \U0001F600");
    const CString narrow = text.ToNarrow(Platform::CodePageUtf8);
    EXPECT_EQ(narrow.View(), "\xC3\xBC\xD0\xBF \xF0\x9F\x98\x80");
    EXPECT_EQ(CUnicodeString(narrow.Text(), Platform::CodePageUtf8), text);
    EXPECT_TRUE(CUnicodeString(u"x").ToNarrow(4711).IsEmpty()) << "no such code page";
}

TEST(UnicodeString, LongTextsAreConvertedWholeUpToTheFirstNull) {
    constexpr std::size_t half = 50000;
    const std::u16string letters(half, u'a');
    const std::u16string euros(half, u'\u20AC');
    std::string bytes;
    for (std::size_t i = 0; i < half; ++i) {
        bytes += "\xE2\x82\xAC";
    }
    const std::pair<std::u16string, std::string> rows[] = {{letters + euros, std::string(half, 'a') + bytes},
                                                           {euros + letters, bytes + std::string(half, 'a')}};
    for (const auto& [wide, narrow] : rows) {
        const std::u16string units = wide + u'\0' + wide;
        const std::string input = narrow + '\0' + narrow;
        const CUnicodeString given(units.data(), static_cast<std::int32_t>(units.size()));
        EXPECT_TRUE(given.ToNarrow(Platform::CodePageUtf8).View() == narrow);
        const auto size = static_cast<std::int32_t>(input.size());
        EXPECT_TRUE(CUnicodeString::FromNarrow(input.data(), size, Platform::CodePageUtf8).View() == wide);
    }
}

TEST(Format, FollowsWidePrint) {
    const auto check = [](const CUnicodeString& result, const char16_t* expected) { EXPECT_EQ(result, expected); };
    check(CUnicodeString::Format(u"%d.%02d|%5d|%-5d|%+d", 5, 0, 42, 42, 7), u"5.00|   42|42   |+7");
    check(CUnicodeString::Format(u"%08lx|%X|%#x|%u", 0x040904B0U, 255, 255, -1), u"040904b0|FF|0xff|4294967295");
    check(CUnicodeString::Format(u"%lld %I64d", std::int64_t{-9000000000}, std::int64_t{9000000000}),
          u"-9000000000 9000000000");
    check(CUnicodeString::Format(u"%s/%.2s/%6s/%-6s|", u"ab", u"abc", u"x", u"x"), u"ab/ab/     x/x     |");
    check(CUnicodeString::Format(u"%*d%c100%% %.3d %o %i", 4, 7, u'!', 5, 8, -3), u"   7!100% 005 10 -3");
    check(CUnicodeString::Format(u"%p", reinterpret_cast<const void*>(0xABCDEF)), u"0000000000ABCDEF");
    for (const std::size_t length : {0U, 255U, 256U, 257U, 5000U}) {
        const std::u16string argument(length, u'x');
        EXPECT_EQ(CUnicodeString::Format(u"%s", argument.c_str()), argument.c_str()) << length;
    }
    char16_t buffer[4];
    const CFormatArgument text(u"abcd");
    EXPECT_EQ(FormatText(buffer, 4, u"%s", &text, 1), 4) << "the bound is exact";
    EXPECT_EQ(FormatText(buffer, 3, u"%s", &text, 1), -1);
    for (const auto& wrong :
         {+[] { CUnicodeString::Format(u"%s", 1); }, +[] { CUnicodeString::Format(u"%d", u"text"); },
          +[] { CUnicodeString::Format(u"%d %d", 1); }, +[] { CUnicodeString::Format(u"%q", 1); },
          +[] { CUnicodeString::Format(u"50%", 1); }}) {
        EXPECT_TRUE(Raised<CInternalError>(wrong));
    }
}
