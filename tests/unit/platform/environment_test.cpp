#include "platform/inc/environment.h"

#include "platform/inc/locale.h"
#include "platform/inc/text.h"
#include "tests/support/text.h"
#include <clocale>
#include <cstdlib>

namespace {

void SetVariable(const char* name, const char* value) {
#ifdef _WIN32
    _putenv_s(name, value);
#else
    setenv(name, value, 1);
#endif
}

} // namespace

TEST(Environment, ReferencesAreExpanded) {
    SetVariable("TEST_NAME", "C:\\a b");
    struct Row {
        std::u16string text, expanded;
    };
    const Row rows[] = {
        {u"%TEST_NAME%\\c", u"C:\\a b\\c"},
        {u"%test_Name%%TEST_NAME%", u"C:\\a bC:\\a b"},
        {u"%TEST_NONE%\\%TEST_NAME%", u"%TEST_NONE%\\C:\\a b"},
        {u"100% of %TEST_NAME%", u"100% of %TEST_NAME%"},
        {u"100%% of %TEST_NAME%", u"100%% of C:\\a b"},
        {u"a%", u"a%"},
        {u"", u""},
    };
    for (const Row& row : rows) {
        char16_t buffer[100] = {};
        const std::uint32_t length = Platform::ExpandEnvironmentStrings(row.text.c_str(), buffer, 100);
        EXPECT_EQ(Readable(buffer), Readable(row.expanded));
        EXPECT_EQ(length, row.expanded.size() + 1) << Readable(row.text);
        char16_t small[2] = {};
        EXPECT_GE(Platform::ExpandEnvironmentStrings(row.text.c_str(), small, 1), row.expanded.size() + 1)
            << Readable(row.text);
    }
}

#ifndef _WIN32
TEST(Environment, LanguagesHaveTheirNumbers) {
    struct Row {
        const char* locale;
        std::uint32_t lcid;
    };
    constexpr Row rows[] = {{"de_DE.UTF-8", 0x407}, {"de_AT.UTF-8", 0xC07}, {"pt_BR", 0x416},
                            {"pt_PT@euro", 0x816},  {"zh_TW.UTF-8", 0x404}, {"no_NO.ISO8859-1", 0x414},
                            {"nb_NO.UTF-8", 0x414}, {"nn_NO.UTF-8", 0x814}, {"sr_RS.UTF-8@latin", 0x81A},
                            {"sr_RS.UTF-8", 0xC1A}, {"C.UTF-8", 0x409},     {"xx_XX", 0x409},
                            {"design", 0x409}};
    for (const Row& row : rows) {
        SetVariable("LC_ALL", row.locale);
        EXPECT_EQ(Platform::GetUserDefaultLCID(), row.lcid) << row.locale;
    }
    SetVariable("LC_ALL", "");
    SetVariable("LC_MESSAGES", "fr_CA.UTF-8");
    SetVariable("LANG", "it_IT.UTF-8");
    EXPECT_EQ(Platform::GetUserDefaultLCID(), 0xC0CU);
    EXPECT_EQ(Platform::GetSystemDefaultLCID(), Platform::LcidEnglishUnitedStates);
    EXPECT_EQ(Platform::GetSystemDefaultLangID(), 0xC0C);
    EXPECT_FALSE(Platform::IsValidLocale(0x401, Platform::LcidInstalled)) << "no language of the table";
}

TEST(Environment, TheUsersLocaleIsThatOfAllCategoriesOrOfTheLetters) {
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LC_MESSAGES"}) {
        SetVariable(name, "");
    }
    SetVariable("LANG", "C.UTF-8");
    constexpr const char* rows[][2] = {{"", "C.UTF-8"}, {"xx_XX", "C"}};
    for (const auto& [wanted, set] : rows) {
        SetVariable("LC_TIME", wanted);
        Platform::SetUserLocale();
        EXPECT_STREQ(std::setlocale(LC_TIME, nullptr), set);
        EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C.UTF-8") << set;
        std::setlocale(LC_ALL, "C");
    }
}
#endif
