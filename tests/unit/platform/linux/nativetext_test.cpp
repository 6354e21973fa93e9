#include "platform/linux/nativetext.h"

#include "tests/support/text.h"
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
