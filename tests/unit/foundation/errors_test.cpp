#include "foundation/inc/errors.h"

#include "foundation/inc/messagenames.h"
#include "foundation/inc/threadobject.h"
#include "platform/inc/lasterror.h"
#include "tests/support/recordinghandler.h"
#include "tests/support/text.h"
#include <thread>

using namespace Tsx;

TEST(Errors, CausesAndTheirTexts) {
    struct Row {
        std::uint32_t code, cause;
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

TEST(Errors, SystemTextsKeepTheirLineEnd) {
    for (const std::uint32_t code : {2U, 87U, 193U, 1006U, 1232U, 1460U, 1607U, 2250U}) {
        const CUnicodeString text = GetLastErrorText(code);
        EXPECT_GT(text.Length(), 4) << code;
        EXPECT_EQ(text.Right(2), u"\r\n") << code;
    }
    EXPECT_TRUE(GetLastErrorText(193).Find(u'%') >= 0) << "inserts stand as they are";
    EXPECT_EQ(GetLastErrorText(0xE0001234), u"Unknown error. Error code: 0xe0001234");
}

namespace {

/// A component's description: a text, none, or a failure.
class CDescription final : public Platform::IErrorInfo {
public:
    explicit CDescription(const char16_t* described, std::int32_t answer = Platform::SOk)
        : text(described), result(answer) {}
    ~CDescription() = default;

    std::uint32_t references = 1;

    std::int32_t QueryInterface(const Platform::Guid&, void** object) override {
        *object = this; // whatever is asked for: the system asks for nothing but this interface and its root
        AddRef();
        return Platform::SOk;
    }
    std::uint32_t AddRef() override { return ++references; }
    std::uint32_t Release() override { return --references; }
    std::int32_t GetGUID(Platform::Guid*) override { return NotMade; }
    std::int32_t GetSource(char16_t**) override { return NotMade; }
    std::int32_t GetDescription(char16_t** description) override {
        *description = text ? Platform::SysAllocString(text) : nullptr;
        return result;
    }
    std::int32_t GetHelpFile(char16_t**) override { return NotMade; }
    std::int32_t GetHelpContext(std::uint32_t*) override { return NotMade; }

private:
    static constexpr auto NotMade = static_cast<std::int32_t>(0x80004001); // E_NOTIMPL

    const char16_t* text;
    std::int32_t result;
};

constexpr auto Unspecified = static_cast<std::int32_t>(0x80004005); // E_FAIL

} // namespace

TEST(Errors, ComTextsComeFromTheComponentOrTheSystem) {
    // A wrapped Windows code has that code's text, without the line end.
    const CUnicodeString denied = GetLastErrorText(5);
    EXPECT_EQ(GetCOMErrorText(static_cast<std::int32_t>(0x80070005), nullptr), denied.Left(denied.Length() - 2));
    EXPECT_EQ(GetCOMErrorText(static_cast<std::int32_t>(0xA0001234), nullptr),
              u"Unknown COM error. Error code: 0xa0001234");
    // A text with inserts cannot be had without their values.
    EXPECT_EQ(GetCOMErrorText(static_cast<std::int32_t>(0x800700C1), nullptr),
              u"Unknown COM error. Error code: 0x800700c1");
    CDescription told(u"The mailbox is full\r\n");
    EXPECT_EQ(GetCOMErrorText(Unspecified, &told), u"The mailbox is full\r\n");
    const CUnicodeString plain = GetCOMErrorText(Unspecified, nullptr);
    CDescription empty(u"");
    CDescription none(nullptr);
    CDescription failing(nullptr, Unspecified);
    for (CDescription* silent : {&empty, &none, &failing}) {
        EXPECT_EQ(GetCOMErrorText(Unspecified, silent), plain);
    }
}

TEST(Errors, AComExceptionTakesTheThreadsErrorInfoOver) {
    CDescription info(u"told");
    Platform::SetErrorInfo(0, &info);
    auto exception = Raised<CCOMException>([] { GenerateCOMException(Unspecified); });
    ASSERT_TRUE(exception);
    EXPECT_EQ(exception->hresult, Unspecified);
    EXPECT_EQ(exception->GetMessageText(), u"told");
    exception.reset();
    EXPECT_EQ(info.references, 1U);
    exception = Raised<CCOMException>([] { GenerateCOMException(Unspecified); });
    ASSERT_TRUE(exception);
    EXPECT_EQ(exception->errorInfo, nullptr) << "the info was taken before";
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
        GenerateLastErrorException(0xE0001234);
        CDescription info(u"told");
        Platform::SetErrorInfo(0, &info);
        GenerateCOMException(Unspecified);
        EXPECT_EQ(info.references, 1U);
        EXPECT_TRUE(mode.ErrorReported);
        GenerateInternalError(InternalPresumeLastError, u"why", u"a == b", u"src\\here", 7, 0xE0001234);
        GenerateInternalError(4, u"", u"", u"src\\here", 7, 0); // no such kind: two failures
        mode.NoExceptions = false;
        ExceptionsEnabled = false;
        GenerateCheckException(ERR_BAD_ARCHIVE, u"y", u"");
        ExceptionsEnabled = true;
    }).join();
    ASSERT_EQ(handler.texts.size(), 8U);
    EXPECT_EQ(handler.texts[0], u"Internal Program Error:\nAssertion failed: ( a == b )\nsrc\\here, 7.\n( why ).");
    EXPECT_EQ(handler.texts[1], u"x is corrupted.");
    EXPECT_EQ(handler.texts[2], u"Unknown error. Error code: 0xe0001234");
    EXPECT_EQ(handler.texts[3], u"told");
    EXPECT_EQ(handler.texts[4], u"Internal Program Error:\nPresumption failed: ( a == b )\nsrc\\here, 7.\n( why ).\n"
                                u"Error code: 0xe0001234 - Unknown error. Error code: 0xe0001234");
    EXPECT_EQ(handler.texts[5].Left(65), u"Internal Program Error:\nAssertion failed: (  )\nsrc\\failuretexts, ");
    EXPECT_EQ(handler.texts[6], u"Internal Program Error:\nAssertion failed: (  )\nsrc\\here, 7.\n(  ).");
    EXPECT_EQ(handler.texts[7], u"y is corrupted.");
    EXPECT_FALSE(ThreadErrorMode.Get()->ErrorReported) << "another thread's report";
}
