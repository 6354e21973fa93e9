#include "foundation/inc/message.h"

#include "foundation/inc/debugflags.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/messagenames.h"
#include "tests/support/folder.h"
#include "tests/support/recordinghandler.h"

using namespace Tsx;

TEST(Message, SubstitutesByPosition) {
    const char16_t* const parameters[] = {u"a", u"b"};
    constexpr std::pair<const char16_t*, const char16_t*> rows[] = {
        {u"%1 of %0%0", u"b of aa"},        {u"50% off", u"50% off"}, {u"[%7]", u"[]"}, {u"%%0", u"%a"},
        {u"%99999999999", u"%99999999999"}, {u"%2147483647|", u"|"},  {u"%01", u"b"},   {u"%-1%", u"%-1%"}};
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(SubstituteParams(text, parameters, 2), expected) << Readable(text);
    }
    EXPECT_EQ(FormatMessage(ERR_FILE_NOT_FOUND, u"x.txt"), u"x.txt was not found.");
    EXPECT_EQ(FormatMessage(MSG_ASSERT, u"a", u"b"), u"MSG_ASSERT a b");
    EXPECT_EQ(GetMessage(MSG_ASSERT), u"MSG_ASSERT");
    EXPECT_EQ(GetMessageOrBuiltIn(ERR_BAD_ARCHIVE, u"built in"), u"built in") << "the foundation is not started here";
}

TEST(Message, ListsOfNamesAreWrittenInUtf16) {
    const CTestFolder folder;
    const auto written = [&folder](const char16_t* name) {
        const std::string bytes = folder.Content(name);
        return std::u16string(reinterpret_cast<const char16_t*>(bytes.data()), bytes.size() / 2);
    };
    SaveUndefinedMessagesList(folder / u"undefined.txt");
    // The application's names are records only where its code is linked, so that they may stand in either list.
    const std::u16string undefined = written(u"undefined.txt");
    EXPECT_TRUE(undefined.starts_with(
        u"\uFEFFERR_NO_MODULE_LOADED_FOR_CLASS\r\nERR_UNCAUGHT_INTERNAL_ERROR\r\nMSG_ASSERT\r\n"));
    EXPECT_NE(undefined.find(u"\r\n********** Unused messages ********\r\nERR_"), std::u16string::npos);
    EXPECT_TRUE(undefined.find(u"ERR_FILE_GENERIC") == std::u16string::npos && !undefined.ends_with(u"\n"));
    SaveAllMessagesList(folder / u"all.txt");
    const std::u16string all = written(u"all.txt");
    const CUnicodeString module = FileSystem::GetProgramPath();
    EXPECT_TRUE(all.starts_with(u"\uFEFFName\tModule\tDefined\tUsed\r\n"));
    for (const CUnicodeString& line :
         {u"MSG_ASSERT\t" + module + u"\tfalse\ttrue\r\n", u"ERR_BAD_ARCHIVE\t" + module + u"\ttrue\ttrue\r\n",
          CUnicodeString(u"ERR_TOOLS_EMAIL_USER_CANCELED\t\ttrue\tfalse\r\n")}) {
        EXPECT_NE(all.find(line.View()), std::u16string::npos) << Readable(line.View());
    }
    // Where no file can be: one of the two keeps silent about that.
    SaveUndefinedMessagesList(folder / u"none\\x.txt");
    EXPECT_TRUE(Raised<CFileException>([&] { SaveAllMessagesList(folder / u"none\\x.txt"); }));
}

TEST(Message, TheDevelopersCheckComplainsAndChangesNothing) {
    const char16_t* const parameters[] = {u"a", u"b"};
    CRecordingHandler handler;
    const CMessageHandlerScope scope(&handler);
    SetDebugFlag(DebugCheckMessagesParamsCount, true);
    for (const auto& [text, count, expected] :
         {std::tuple(u"%0 %1", 2, u"a b"),
          {u"%0 %0", 1, u"a a"},
          {u"50% off %1", 2,
           u"50% off b|Number of params in message \"50% off %1\" is invalid: 1, expected 2.|"
           u"Some parameters in message \"50% off %1\" are missing: 0."},
          {u"%4%1", 2, u"b|Some parameters in message \"%4%1\" are missing: 0 ,2 ,3."},
          {u"none", 2, u"none|Number of params in message \"none\" is invalid: 0, expected 2."}}) {
        CUnicodeString told = SubstituteParams(text, parameters, count);
        for (const CUnicodeString& complaint : std::exchange(handler.texts, {})) {
            told += u"|" + complaint;
        }
        EXPECT_EQ(told, expected);
    }
    SetDebugFlag(DebugCheckMessagesParamsCount, false);
    EXPECT_TRUE(handler.boxes.front().View().ends_with(u" 31")) << "a question with a warning";
}
