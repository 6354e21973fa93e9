#include "platform/inc/environment.h"

#include "tests/support/text.h"
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
    constexpr std::u16string_view rows[][2] = {
        {u"%TEST_NAME%\\c", u"C:\\a b\\c"},
        {u"%test_Name%%TEST_NAME%", u"C:\\a bC:\\a b"},
        {u"%TEST_NONE%\\%TEST_NAME%", u"%TEST_NONE%\\C:\\a b"},
        {u"100% of %TEST_NAME%", u"100% of %TEST_NAME%"},
        {u"100%% of %TEST_NAME%", u"100%% of C:\\a b"},
        {u"a%", u"a%"},
        {u"", u""},
    };
    for (const auto& [text, expanded] : rows) {
        char16_t buffer[100] = {};
        const std::uint32_t length = Platform::ExpandEnvironmentStrings(text.data(), buffer, 100);
        EXPECT_EQ(Readable(buffer), Readable(expanded));
        EXPECT_EQ(length, expanded.size() + 1) << Readable(text);
        EXPECT_GE(Platform::ExpandEnvironmentStrings(text.data(), buffer, 1), expanded.size() + 1) << Readable(text);
    }
}
