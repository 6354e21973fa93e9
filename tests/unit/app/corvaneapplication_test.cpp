#include "app/CorvaneApplication.h"

#include "tests/support/text.h"

using namespace Tsx;

TEST(CorvaneApplication, SplitsAddresses) {
    struct Row {
        const char16_t *text, *name, *address;
    };
    constexpr Row rows[] = {{u"Ann Lee <ann>", u"Ann Lee", u"ann"},
                            {u"Ann < ann >", u"Ann", u"ann"},
                            {u"Ann < ann > ", u"", u"Ann < ann > "},
                            {u"<ann>", u"", u"ann"},
                            {u"a <b> <c>", u"a <b>", u"c"},
                            {u"ann", u"", u"ann"},
                            {u"Ann <ann", u"", u"Ann <ann"},
                            {u"ann>", u"", u"ann>"},
                            {u">", u"", u">"},
                            {u"<>", u"", u""},
                            {u"\u3000Ann\t<\u00A0ann\u2003>", u"Ann", u"ann"}};
    for (const Row& row : rows) {
        CUnicodeString name(u"old");
        CUnicodeString address(u"old");
        CCorvaneApplication::SplitAddress(row.text, name, address);
        EXPECT_EQ(name, row.name) << Readable(row.text);
        EXPECT_EQ(address, row.address) << Readable(row.text);
    }
    CUnicodeString unused;
    EXPECT_TRUE(Raised<CInternalError>([&] { CCorvaneApplication::SplitAddress(u"", unused, unused); }));
}
