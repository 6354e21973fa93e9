#include "foundation/inc/errors.h"

#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/messagenames.h"
#include "foundation/inc/threadobject.h"
#include "platform/inc/lasterror.h"
#include "tests/support/text.h"
#include <thread>
#include <vector>

using namespace Tsx;

namespace {

/// Keeps what it is shown.
class CRecordingHandler : public CMessageHandler {
public:
    std::vector<CUnicodeString> texts;

    std::int32_t ShowMessageBox(Platform::Window, const char16_t* text, const char16_t*, std::uint32_t style) override {
        texts.emplace_back(text);
        return GetDefaultButton(style);
    }
};

} // namespace

TEST(Errors, CausesAndTheirTexts) {
    struct Row {
        std::uint32_t code;
        std::uint32_t cause;
    };
    constexpr Row rows[] = {{2, 2},    {107, 2}, {3, 3},    {267, 3}, {4, 4},    {5, 5},   {80, 5},
                            {193, 6},  {145, 7}, {62, 8},   {131, 9}, {997, 10}, {32, 11}, {167, 12},
                            {112, 13}, {38, 14}, {183, 15}, {1, 1},   {4711, 1}};
    for (const Row& row : rows) {
        EXPECT_EQ(GetFileCause(row.code), row.cause) << row.code;
    }
    EXPECT_TRUE(Raised<CInternalError>([] { GetFileCause(0); }));
    EXPECT_EQ(GetFileErrorText(15, 0, u"f"), u"Cannot create f. The specified file already exists.");
    EXPECT_EQ(GetFileErrorText(13, 112, u"f"), u"Disk full while accessing f.");
    EXPECT_EQ(GetFileErrorText(1, 0xE0001234, u"f"),
              u"An error occurred while accessing f: \nUnknown error. Error code: 0xe0001234");
    EXPECT_EQ(GetLastErrorText(0), u"Unknown error. Error code: 0x0");
}

TEST(Errors, EachClassRendersItself) {
    const auto check = Raised<CCheckException>([] { GenerateCheckException(ERR_CANT_LOAD_DLL, u"x.dll", u"why"); });
    ASSERT_TRUE(check);
    EXPECT_EQ(check->GetMessageText(), u"Cannot load DLL x.dll.\nwhy");
    const auto file = Raised<CFileException>([] { GenerateFileException(2, u"x"); });
    ASSERT_TRUE(file);
    EXPECT_EQ(file->GetMessageText(), u"x was not found.");
    const auto internal = Raised<CInternalError>([] { FailAssertion(u"src\\here", 12); });
    ASSERT_TRUE(internal);
    EXPECT_EQ(internal->GetMessageText(), u"Internal Program Error:\nsrc\\here, 12.");
    Platform::SetLastError(0x1F);
    const auto call = Raised<CInternalError>([] { FailAssertionWithLastError(u"f", 3); });
    ASSERT_TRUE(call);
    EXPECT_EQ(call->GetMessageText(), u"Internal Program Error:\nf, 3.\nError code: 0x1f");
    const auto memory = Raised<CMemoryException>([] { GenerateMemoryException(); });
    ASSERT_TRUE(memory);
    EXPECT_EQ(memory->GetMessageText(), u"Not enough memory!");
    const auto user = Raised<CUserException>([] { GenerateUserException(); });
    ASSERT_TRUE(user);
    EXPECT_EQ(user->GetMessageText(), u"");
}

TEST(Errors, AThreadThatMustNotThrowShowsAndGoesOn) {
    CRecordingHandler handler;
    const CMessageHandlerScope scope(&handler);
    std::thread([&] {
        CThreadErrorMode& mode = *ThreadErrorMode.Get();
        mode.NoExceptions = true;
        EXPECT_FALSE(GenerateInternalError(InternalAssert, u"why", u"a == b", u"src\\here", 7, 0));
        GenerateCheckException(ERR_BAD_ARCHIVE, u"x", u"");
        EXPECT_TRUE(mode.ErrorReported);
    }).join();
    ASSERT_EQ(handler.texts.size(), 2U);
    EXPECT_EQ(handler.texts[0], u"Internal Program Error:\nAssertion failed: ( a == b )\nsrc\\here, 7.\n( why ).");
    EXPECT_EQ(handler.texts[1], u"x is corrupted.");
    EXPECT_FALSE(ThreadErrorMode.Get()->ErrorReported) << "another thread's report";
}
