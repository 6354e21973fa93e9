#include "app/ConsoleApplication.h"

#include "tests/support/text.h"

using namespace Tsx;
using Console::CConsoleApplication;

TEST(ConsoleApplication, OptionNames) {
    struct Row {
        const char16_t *name, *fullName, *shortName;
        bool matches;
    };
    constexpr Row rows[] = {
        {u"s", u"subject", u"s", true},         {u"su", u"subject", u"s", true},   {u"SUBJECT", u"subject", u"s", true},
        {u"subjects", u"subject", u"s", false}, {u"", u"subject", u"s", false},    {u"b", u"subject", u"s", false},
        {u"sx", u"subject", u"s", false},       {u"NOLOGO", u"NoLogo", u"", true}, {u"NoLog", u"NoLogo", u"", false},
        {u"", u"NoLogo", u"", false},           {u"s", u"subject", u"sub", false}, {u"Sub", u"subject", u"sub", true}};
    for (const Row& row : rows) {
        EXPECT_EQ(CConsoleApplication::IsOptionName(row.name, row.fullName, row.shortName), row.matches)
            << Readable(row.name);
    }
    EXPECT_TRUE(Raised<CInternalError>([] { CConsoleApplication::IsOptionName(u"x", u"", u""); }));
    EXPECT_TRUE(Raised<CInternalError>([] { CConsoleApplication::IsOptionName(u"x", u"subject", u"b"); }));
    EXPECT_TRUE(Raised<CInternalError>([] { CConsoleApplication::IsOptionName(u"x", u"su", u"sub"); }));
}
