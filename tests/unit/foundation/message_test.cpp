#include "foundation/inc/message.h"

#include "foundation/inc/messagenames.h"
#include "tests/support/text.h"

using namespace Tsx;

TEST(Message, SubstitutesByPosition) {
    struct Row {
        const char16_t* text;
        const char16_t* expected;
    };
    constexpr Row rows[] = {{u"%1 of %0", u"b of a"},
                            {u"100%", u"100%"},
                            {u"50% off", u"50% off"},
                            {u"[%7]", u"[]"},
                            {u"%%0", u"%a"},
                            {u"%99999999999", u"%99999999999"},
                            {u"%99999999999999999999", u"%99999999999999999999"},
                            {u"%2147483647|", u"|"},
                            {u"", u""},
                            {u"%0%0", u"aa"},
                            {u"%01", u"b"},
                            {u"%-1", u"%-1"}};
    const char16_t* const parameters[] = {u"a", u"b"};
    for (const Row& row : rows) {
        EXPECT_EQ(SubstituteParams(row.text, parameters, 2), row.expected) << Readable(row.text);
    }
}

TEST(Message, ComesFromTheTableOrDegradesToItsName) {
    EXPECT_EQ(FormatMessage(ERR_FILE_NOT_FOUND, u"x.txt"), u"x.txt was not found.");
    EXPECT_FALSE(HasMessage(MSG_ASSERT));
    EXPECT_EQ(FormatMessage(MSG_ASSERT, u"a", u"b"), u"MSG_ASSERT a b");
    EXPECT_EQ(GetMessageOrBuiltIn(ERR_BAD_ARCHIVE, u"built in"), u"built in") << "the foundation is not started here";
}
