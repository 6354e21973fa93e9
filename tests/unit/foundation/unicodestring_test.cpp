#include "foundation/inc/unicodestring.h"

#include "platform/inc/text.h"
#include "tests/support/text.h"
#include <limits>

using namespace Tsx;

TEST(UnicodeString, SharesAndWritesAfterCopy) {
    CUnicodeString first(u"text");
    const CUnicodeString second(first);
    EXPECT_EQ(first.Text(), second.Text()) << "a copy shares the block";
    first.Append(u"!", 1);
    EXPECT_EQ(first, u"text!");
    EXPECT_EQ(second, u"text");
    CUnicodeString self(u"ab");
    for (int i = 0; i < 6; ++i) {
        self += self; // the source moves with the growth
    }
    EXPECT_EQ(self.Length(), 128);
    EXPECT_EQ(self.Right(3), u"bab");
    EXPECT_EQ(second.Mid(2, 0).Text(), CUnicodeString().Text()) << "empty parts share the empty block";
}

TEST(UnicodeString, PartsAreCutToWhatThereIs) {
    const CUnicodeString text(u"abcdef");
    EXPECT_EQ(text.Mid(2, 3), u"cde");
    EXPECT_EQ(text.Mid(4, 100), u"ef");
    EXPECT_EQ(text.Mid(10, 1), u"");
    EXPECT_EQ(text.Left(-1), u"");
    EXPECT_EQ(text.Right(2), u"ef");
    EXPECT_EQ(text.Find(u'd', 3), 3);
    EXPECT_EQ(text.Find(u'd', 4), -1);
    CUnicodeString cut(text);
    cut.GetBuffer(-1);
    cut.SetLength(-1);
    EXPECT_EQ(cut, u"");
    const char16_t* const none = nullptr;
    EXPECT_EQ(none + (cut += none) + none, none);
    EXPECT_GT(text.CompareNoCase(none), 0);
}

TEST(UnicodeString, TrimsTheWholeSetOfWhiteSpace) {
    CUnicodeString text(u"\t\u00A0\u2003 a b \u3000\r\n");
    text.Trim();
    EXPECT_EQ(text, u"a b");
    CUnicodeString blank(u" \t ");
    blank.Trim();
    EXPECT_TRUE(blank.IsEmpty());
}

TEST(UnicodeString, ReadsNumbersAndSwitches) {
    struct Row {
        const char16_t* text;
        bool valid;
        std::int32_t value;
    };
    constexpr Row rows[] = {{u"12", true, 12},
                            {u" 12\t", true, 12},
                            {u"+\uFF17", true, 7},
                            {u"-1", true, -1},
                            {u"\u0661\u06F22", true, 122},
                            {u"\u205F\u1816\u1040\u3000", true, 60},
                            {u"-\u0F22\u0F21\u0F24\u0F27\u0F24\u0F28\u0F23\u0F26\u0F24\u0F28", true,
                             std::numeric_limits<std::int32_t>::min()},
                            {u"2147483647", true, std::numeric_limits<std::int32_t>::max()},
                            {u"2147483648", false, 0},
                            {u"-2147483649", false, 0},
                            {u"12a", false, 0},
                            {u"", false, 0},
                            {u"+-5", false, 0},
                            {u"1 2", false, 0},
                            {u"\u00B2", false, 0}, // superscript
                            {u"99999999999999999999", false, 0}};
    for (const Row& row : rows) {
        std::int32_t value = 0;
        EXPECT_EQ(CUnicodeString(row.text).ToInt(value), row.valid) << Readable(row.text);
        EXPECT_EQ(value, row.value) << Readable(row.text);
    }
    bool on = false;
    EXPECT_TRUE(CUnicodeString(u" YES ").ToBool(on) && on);
    EXPECT_TRUE(CUnicodeString(u"Off").ToBool(on) && !on);
    EXPECT_FALSE(CUnicodeString(u"2").ToBool(on));
    EXPECT_EQ(CUnicodeString::FromInt(std::numeric_limits<std::int32_t>::min()), u"-2147483648");
    EXPECT_EQ(CUnicodeString::FromHex(0xDEADBEEF), u"deadbeef");
}

TEST(UnicodeString, ConvertsToCodePagesAndBack) {
    const CUnicodeString text(u"Gr\u00FC\u00DFe \u043F \U0001F600");
    const CString narrow = text.ToNarrow(Platform::CodePageUtf8);
    EXPECT_EQ(narrow.View(), "Gr\xC3\xBC\xC3\x9F"
                             "e \xD0\xBF \xF0\x9F\x98\x80");
    EXPECT_EQ(CUnicodeString(narrow.Text(), Platform::CodePageUtf8), text);
    EXPECT_EQ(CUnicodeString(u"a\xD800z").ToNarrow(Platform::CodePageUtf8).View(), "a\xEF\xBF\xBDz");
    EXPECT_EQ(CUnicodeString(u"plain").ToNarrow(AnsiCodePage).View(), "plain");
    EXPECT_TRUE(CUnicodeString(u"x").ToNarrow(4711).IsEmpty()) << "no such code page";
}

TEST(UnicodeString, LongTextsAreConvertedWholeUpToTheFirstNull) {
    constexpr std::size_t half = 50000;
    const std::u16string letters(half, u'a');
    const std::u16string euros(half, u'\u20AC');
    std::string narrowEuros;
    for (std::size_t i = 0; i < half; ++i) {
        narrowEuros += "\xE2\x82\xAC";
    }
    struct Row {
        std::u16string wide;
        std::string narrow;
    };
    const Row rows[] = {{letters + euros, std::string(half, 'a') + narrowEuros},
                        {euros + letters, narrowEuros + std::string(half, 'a')}};
    for (const Row& row : rows) {
        const std::u16string wide = row.wide + u'\0' + row.wide;
        const std::string narrow = row.narrow + '\0' + row.narrow;
        const auto wideSize = static_cast<std::int32_t>(wide.size());
        const auto narrowSize = static_cast<std::int32_t>(narrow.size());
        EXPECT_TRUE(CUnicodeString(wide.data(), wideSize).ToNarrow(Platform::CodePageUtf8).View() == row.narrow);
        EXPECT_TRUE(CUnicodeString::FromNarrow(narrow.data(), narrowSize, Platform::CodePageUtf8).View() == row.wide);
    }
}

TEST(UnicodeString, FormattedTextGrowsAsNeeded) {
    for (const std::int32_t length : {0, 255, 256, 257, 5000}) {
        CUnicodeString argument;
        argument.GetBuffer(length);
        for (std::int32_t i = 0; i < length; ++i) {
            argument += u'x';
        }
        EXPECT_EQ(CUnicodeString::Format(u"%s", argument), argument) << length;
    }
}
