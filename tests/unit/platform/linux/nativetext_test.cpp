#include "platform/linux/text/nativetext.h"

#include "platform/inc/text.h"
#include "platform/linux/text/lettercase.h"
#include "tests/support/text.h"
#include <clocale>
#include <cstdlib>
#include <cwctype>
#include <filesystem>
#include <unistd.h>
#include <vector>

using namespace Platform;

TEST(NativeText, EveryByteStringIsANameOfItsOwn) {
    const std::vector<std::string> names = {
        "plain",    "Gr\xC3\xBC\xC3\x9F", "\xF0\x9F\x98\x80", "\xFF\xFE",  "a\xC3",       "\xE2\x82",
        "\xC0\x80", "\xED\xA0\x80",       "\xF4\x90\x80\x80", "\x80x\xBF", "\xE2\x28\xA1"};
    for (const std::string& name : names) {
        EXPECT_EQ(NativeName(WideName(name)), name) << Readable(WideName(name));
    }
}

TEST(NativeText, MalformedTextIsReplacedPieceByPiece) {
    struct Row {
        std::string_view bytes;
        std::u16string_view text;
    };
    constexpr Row rows[] = {{"a\xC3z", u"a\uFFFDz"},           {"\xE2\x82z", u"\uFFFDz"},
                            {"\xC0\x80", u"\uFFFD\uFFFD"},     {"\xF0\x9F\x98", u"\uFFFD"},
                            {"\xED\xA0\x80", u"\uFFFD\uFFFD"}, {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
                            {"\xEF\xBF\xBF", u"\uFFFF"}};
    for (const Row& row : rows) {
        EXPECT_EQ(Readable(Utf16Text(row.bytes)), Readable(row.text));
    }
    EXPECT_EQ(Utf8Text(u"\xDC00\xD800"
                       u"a"),
              "\xEF\xBF\xBD\xEF\xBF\xBD"
              "a");
}

// The C library knows all simple mappings; those of Windows are the ones that are each other's inverse.
TEST(LetterCase, PairsAreThoseOfUnicode) {
    const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    int pairs = 0;
    for (unsigned c = 0; c < 0x10000; ++c) {
        const char16_t lower = DowncaseCharacter(static_cast<char16_t>(c));
        if (lower != c) {
            ++pairs;
            EXPECT_EQ(UpcaseCharacter(lower), c);
            EXPECT_TRUE(!unicode || (towlower_l(c, unicode) == lower && towupper_l(lower, unicode) == c)) << c;
        }
    }
    EXPECT_EQ(pairs, 1163) << "those of Unicode 14";
    if (unicode) {
        freelocale(unicode);
    }
}

TEST(LetterCase, TurkishLocaleChangesNoNames) {
    const std::string folder = testing::TempDir() + "turkish." + std::to_string(getpid());
    const std::string make = "mkdir " + folder + " && localedef -i tr_TR -f UTF-8 " + folder + "/tr_TR.UTF-8";
    const bool made = std::system(make.c_str()) == 0;
    setenv("LOCPATH", folder.c_str(), 1);
    setenv("LC_ALL", "tr_TR.UTF-8", 1);
    const bool turkish = made && std::setlocale(LC_ALL, "") && std::towlower(L'I') == L'\u0131';
    SetUserLocale();
    std::filesystem::remove_all(folder);
    if (!turkish) {
        GTEST_SKIP() << "localedef can't make a Turkish locale here";
    }
    EXPECT_EQ(wcsicmp(u"RECIPIENT", u"recipient"), 0);
    EXPECT_EQ(towupper(u'i'), u'I');
    EXPECT_TRUE(NamesEqual(u"FILE.INI", u"file.ini"));
    EXPECT_FALSE(NamesEqual(u"\u0130", u"i"));
}
