#include "foundation/inc/format.h"

#include "tests/support/text.h"

using namespace Tsx;

TEST(Format, FollowsWidePrint) {
    const auto check = [](const CUnicodeString& result, const char16_t* expected) { EXPECT_EQ(result, expected); };
    check(CUnicodeString::Format(u"%d.%02d|%5d|%-5d|%+d", 5, 0, 42, 42, 7), u"5.00|   42|42   |+7");
    check(CUnicodeString::Format(u"%08lx|%X|%#x|%u", 0x040904B0U, 255, 255, -1), u"040904b0|FF|0xff|4294967295");
    check(CUnicodeString::Format(u"%lld %I64d", std::int64_t{-9000000000}, std::int64_t{9000000000}),
          u"-9000000000 9000000000");
    check(CUnicodeString::Format(u"%s/%.2s/%6s/%-6s|", u"ab", u"abc", u"x", u"x"), u"ab/ab/     x/x     |");
    check(CUnicodeString::Format(u"%*d%c100%%", 4, 7, u'!'), u"   7!100%");
    check(CUnicodeString::Format(u"%.3d %o %i", 5, 8, -3), u"005 10 -3");
    check(CUnicodeString::Format(u"%p", reinterpret_cast<const void*>(0xABCDEF)), u"0000000000ABCDEF");
}

TEST(Format, BoundIsExact) {
    char16_t buffer[4];
    const CFormatArgument text(u"abcd");
    EXPECT_EQ(FormatText(buffer, 4, u"%s", &text, 1), 4);
    EXPECT_EQ(FormatText(buffer, 3, u"%s", &text, 1), -1);
}

TEST(Format, MismatchIsAnInternalError) {
    EXPECT_TRUE(Raised<CInternalError>([] { CUnicodeString::Format(u"%s", 1); }));
    EXPECT_TRUE(Raised<CInternalError>([] { CUnicodeString::Format(u"%d", u"text"); }));
    EXPECT_TRUE(Raised<CInternalError>([] { CUnicodeString::Format(u"%d %d", 1); }));
    EXPECT_TRUE(Raised<CInternalError>([] { CUnicodeString::Format(u"%q", 1); }));
    EXPECT_TRUE(Raised<CInternalError>([] { CUnicodeString::Format(u"50%", 1); }));
}
