#include "foundation/inc/message.h"

#include "foundation/inc/debugflags.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/messagenames.h"
#include "foundation/inc/resourceinfo.h"
#include "platform/inc/messagebox.h"
#include "tests/support/folder.h"
#include "tests/support/recordinghandler.h"
#include "tests/support/text.h"
#include <set>
#include <string>

using namespace Tsx;

TEST(Message, SubstitutesByPosition) {
    struct Row {
        const char16_t *text, *expected;
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

TEST(Message, ATextOfTenMebibytes) {
    std::u16string text;
    std::u16string expected;
    while (text.size() < 5U << 20) {
        text += u"50% of %1 and %99999999999";
        expected += u"50% of b and %99999999999";
    }
    const char16_t* const parameters[] = {u"a", u"b"};
    EXPECT_TRUE(SubstituteParams(text.c_str(), parameters, 2) == expected.c_str());
}

TEST(Message, EveryTextOfTheTable) {
    struct Row {
        const char16_t *name, *text;
    };
    constexpr Row rows[] = {
#define ROW(id, name, use, text) {u## #name, text},
#include "tests/support/catalogue.inc"
#undef ROW
    };
    const char16_t* const parameters[] = {u"<0>", u"<1>", u"<2>", u"<3>"};
    for (const Row& row : rows) {
        CUnicodeString text;
        EXPECT_TRUE(GetResourceBase().LookupMessage(row.name, text)) << Readable(row.name);
        EXPECT_EQ(SubstituteParams(text, parameters, 4), row.text) << Readable(row.name);
    }
}

TEST(Message, ListsOfUndefinedAndUnusedNames) {
    // The application's names are records only where its code is linked, so that they may stand in either list.
    CArray<CUnicodeString> undefined;
    CollectUndefinedMessages(undefined);
    const char16_t* const builtIn[] = {u"ERR_NO_MODULE_LOADED_FOR_CLASS",
                                       u"ERR_UNCAUGHT_INTERNAL_ERROR",
                                       u"MSG_ASSERT",
                                       u"MSG_ASSERTLASTERROR",
                                       u"MSG_FAST_MEMORY_FILE",
                                       u"MSG_MEMORY_FILE",
                                       u"MSG_PRESUME",
                                       u"MSG_PRESUMELASTERROR",
                                       u"MSG_VIRTUAL_MEMORY_FILE"};
    ASSERT_EQ(undefined.Size(), static_cast<std::int32_t>(std::size(builtIn)));
    for (std::int32_t i = 0; i < undefined.Size(); ++i) {
        EXPECT_EQ(undefined[i], builtIn[i]);
    }
    CArray<CUnicodeString> unused;
    CollectUnusedMessages(unused);
    std::set<std::u16string> found;
    for (const CUnicodeString& name : unused) {
        EXPECT_TRUE(found.empty() || *found.rbegin() < name.Text()) << "in order, each once";
        found.insert(name.Text());
    }
    enum { Idle, Used };
#define ROW(id, name, use, text)                                                                                       \
    if ((use) == Idle) {                                                                                               \
        EXPECT_EQ(found.count(u## #name), 1U) << #name;                                                                \
    }
#include "tests/support/catalogue.inc"
#undef ROW
    EXPECT_EQ(found.count(u"ERR_FILE_GENERIC"), 0U);
}

TEST(Message, ListsAreWrittenInUtf16) {
    const CTestFolder folder;
    folder.Write(u"undefined.txt", "an old list that is longer than the mark");
    SaveUndefinedMessagesList(folder / u"undefined.txt");
    const std::string undefined = folder.Content(u"undefined.txt");
    const auto wide = [](std::u16string_view text) {
        return std::string(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t));
    };
    EXPECT_EQ(undefined.substr(0, 2), "\xFF\xFE");
    EXPECT_TRUE(undefined.substr(2).starts_with(wide(u"ERR_NO_MODULE_LOADED_FOR_CLASS\r\nERR_UNCAUGHT")));
    EXPECT_NE(undefined.find(wide(u"MSG_VIRTUAL_MEMORY_FILE\r\n********** Unused messages ********\r\nERR_")),
              std::string::npos);
    EXPECT_FALSE(undefined.ends_with(wide(u"\n"))) << "nothing stands behind the last name";

    SaveAllMessagesList(folder / u"all.txt");
    const std::string all = folder.Content(u"all.txt");
    const CUnicodeString module = FileSystem::GetProgramPath();
    EXPECT_TRUE(all.starts_with("\xFF\xFE" + wide(u"Name\tModule\tDefined\tUsed\r\n")));
    for (const CUnicodeString& line :
         {u"MSG_ASSERT\t" + module + u"\tfalse\ttrue\r\n", u"ERR_BAD_ARCHIVE\t" + module + u"\ttrue\ttrue\r\n",
          CUnicodeString(u"ERR_TOOLS_EMAIL_USER_CANCELED\t\ttrue\tfalse\r\n")}) {
        EXPECT_NE(all.find(wide(line.View())), std::string::npos) << Readable(line.View());
    }
    // Where no file can be: one of the two keeps silent about that.
    SaveUndefinedMessagesList(folder / u"none\\x.txt");
    EXPECT_TRUE(Raised<CFileException>([&] { SaveAllMessagesList(folder / u"none\\x.txt"); }));
}

TEST(Message, TheDevelopersCheckComplainsAndChangesNothing) {
    struct Row {
        const char16_t* text;
        std::int32_t count;
        const char16_t *result, *complaints;
    };
    constexpr Row rows[] = {
        {u"%0 %1", 2, u"a b", u""},
        {u"%0 %0", 1, u"a a", u""},
        {u"", 0, u"", u""},
        {u"50% off %1", 2, u"50% off b",
         u"Number of params in message \"50% off %1\" is invalid: 1, expected 2.\n"
         u"Some parameters in message \"50% off %1\" are missing: 0.\n"},
        {u"%4%1", 2, u"b", u"Some parameters in message \"%4%1\" are missing: 0 ,2 ,3.\n"},
        {u"none", 2, u"none", u"Number of params in message \"none\" is invalid: 0, expected 2.\n"}};
    const char16_t* const parameters[] = {u"a", u"b"};
    CRecordingHandler handler;
    const CMessageHandlerScope scope(&handler);
    SetDebugFlag(DebugCheckMessagesParamsCount, true);
    for (const Row& row : rows) {
        handler.texts.clear();
        EXPECT_EQ(SubstituteParams(row.text, parameters, row.count), row.result);
        CUnicodeString complaints;
        for (const CUnicodeString& text : handler.texts) {
            complaints += text + u'\n';
        }
        EXPECT_EQ(complaints, row.complaints) << Readable(row.text);
    }
    SetDebugFlag(DebugCheckMessagesParamsCount, false);
    EXPECT_TRUE(handler.boxes.front().View().ends_with(u" 31")) << "a question with a warning";
}

TEST(Message, ComesFromTheTableOrDegradesToItsName) {
    EXPECT_EQ(FormatMessage(ERR_FILE_NOT_FOUND, u"x.txt"), u"x.txt was not found.");
    EXPECT_FALSE(HasMessage(MSG_ASSERT));
    EXPECT_EQ(FormatMessage(MSG_ASSERT, u"a", u"b"), u"MSG_ASSERT a b");
    EXPECT_EQ(GetMessageOrBuiltIn(ERR_BAD_ARCHIVE, u"built in"), u"built in") << "the foundation is not started here";
}
