#include "foundation/inc/errors.h"

#include "foundation/inc/messagenames.h"
#include "platform/inc/lasterror.h"
#include "tests/support/recordinghandler.h"
#include <set>

using namespace Tsx;

TEST(Errors, CausesAndTheirTexts) {
    // From the first cause on: its text, and every Windows code that means it.
    const std::pair<const char16_t*, std::set<std::uint32_t>> rows[] = {
        {u"f was not found.", {2, 6, 18, 107}},
        {u"f contains an invalid path.",
         {3, 15, 17, 34, 52, 53, 55, 67, 70, 85, 111, 123, 124, 125, 144, 154, 161, 206, 208, 267}},
        {u"f could not be opened because there are too many open files.", {4, 36, 68, 113}},
        {u"Access to f was denied.", {5, 12, 19, 29, 54, 58, 64, 65, 71, 80, 82, 86, 170, 999}},
        {u"An invalid file handle was associated with f.", {11, 26, 60, 66, 114, 182, 191, 193}},
        {u"f could not be removed because it is the current directory.", {16, 145}},
        {u"f could not be created because the directory is full.", {62}},
        {u"Seek failed on f.", {24, 25, 27, 30, 131, 132}},
        {u"A hardware I/O error was reported while accessing f.", {20, 21, 22, 23, 57, 59, 88, 117, 995, 996, 997}},
        {u"A sharing violation occurred while accessing f.", {32}},
        {u"A locking violation occurred while accessing f.", {33, 108, 167}},
        {u"Disk full while accessing f.", {39, 112}},
        {u"An attempt was made to access f past its end.", {38}},
        {u"Cannot create f. The specified file already exists.", {183}}};
    std::uint32_t cause = FC_FileNotFound;
    for (const auto& [text, codes] : rows) {
        std::set<std::uint32_t> found;
        for (std::uint32_t code = 1; code < 5000; ++code) {
            if (GetFileCause(code) == cause) {
                found.insert(code);
            }
        }
        EXPECT_EQ(found, codes) << cause;
        EXPECT_EQ(GetFileErrorText(cause, 0, u"f"), text);
        ++cause;
    }
    EXPECT_EQ(cause - 1, FC_AlreadyExists);
    EXPECT_EQ(GetFileCause(1), FC_Generic);
    EXPECT_EQ(GetFileErrorText(1, 0xE0001234, u"f"),
              u"An error occurred while accessing f: \nUnknown error. Error code: 0xe0001234");
    EXPECT_TRUE(Raised<CInternalError>([] { GetFileCause(0); }));
}

namespace {

constexpr auto Unspecified = static_cast<std::int32_t>(0x80004005); // E_FAIL

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
    std::int32_t GetGUID(Platform::Guid*) override { return Unspecified; }
    std::int32_t GetSource(char16_t**) override { return Unspecified; }
    std::int32_t GetDescription(char16_t** description) override {
        *description = text ? Platform::SysAllocString(text) : nullptr;
        return result;
    }
    std::int32_t GetHelpFile(char16_t**) override { return Unspecified; }
    std::int32_t GetHelpContext(std::uint32_t*) override { return Unspecified; }

private:
    const char16_t* text;
    std::int32_t result;
};

} // namespace

TEST(Errors, TextsComeFromTheComponentOrTheSystem) {
    EXPECT_EQ(GetLastErrorText(0), u"Unknown error. Error code: 0x0");
    for (const std::uint32_t code : {2U, 193U, 1232U, 2250U}) {
        const CUnicodeString text = GetLastErrorText(code);
        EXPECT_TRUE(text.Length() > 4 && text.Right(2) == u"\r\n") << code;
    }
    EXPECT_GE(GetLastErrorText(193).Find(u'%'), 0) << "inserts stand as they are";
    // A wrapped Windows code has that code's text, without the line end.
    const CUnicodeString denied = GetLastErrorText(5);
    EXPECT_EQ(GetCOMErrorText(static_cast<std::int32_t>(0x80070005), nullptr), denied.Left(denied.Length() - 2));
    // A text with inserts cannot be had without their values.
    EXPECT_EQ(GetCOMErrorText(static_cast<std::int32_t>(0x800700C1), nullptr),
              u"Unknown COM error. Error code: 0x800700c1");
    CDescription told(u"The mailbox is full\r\n");
    EXPECT_EQ(GetCOMErrorText(Unspecified, &told), u"The mailbox is full\r\n");
    for (const auto& [text, answer] :
         {std::pair(u"", Platform::SOk), {nullptr, Platform::SOk}, {nullptr, Unspecified}}) {
        CDescription silent(text, answer);
        EXPECT_EQ(GetCOMErrorText(Unspecified, &silent), GetCOMErrorText(Unspecified, nullptr));
    }
    Platform::SetErrorInfo(0, &told);
    const auto exception = Raised<CCOMException>([] { GenerateCOMException(Unspecified); });
    EXPECT_EQ(exception ? exception->GetMessageText() : u"", u"The mailbox is full\r\n") << "the thread's error info";
    const auto second = Raised<CCOMException>([] { GenerateCOMException(Unspecified); });
    EXPECT_TRUE(second && second->hresult == Unspecified && !second->errorInfo) << "which was taken";
    EXPECT_EQ(told.references, 2U);
}

TEST(Errors, AThreadThatMustNotThrowShowsAndGoesOn) {
    CRecordingHandler handler;
    const CMessageHandlerScope scope(&handler);
    std::thread([&] {
        CThreadErrorMode& mode = *ThreadErrorMode.Get();
        mode.NoExceptions = true;
        EXPECT_FALSE(GenerateInternalError(InternalAssert, u"why", u"a == b", u"src\\here", 7, 0));
        GenerateCheckException(ERR_CANT_LOAD_DLL, u"x.dll", u"why");
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
    std::string shown;
    for (const CUnicodeString& text : handler.texts) {
        const bool hasOwnLine = text.View().find(u"src\\failuretexts") != std::u16string_view::npos;
        shown += hasOwnLine ? "no such kind\n" : Readable(text.View()) + "\n";
    }
    EXPECT_EQ(shown, "Internal Program Error:\\u000AAssertion failed: ( a == b )\\u000Asrc\\here, 7.\\u000A( why ).\n"
                     "Cannot load DLL x.dll.\\u000Awhy\n"
                     "Unknown error. Error code: 0xe0001234\n"
                     "told\n"
                     "Internal Program Error:\\u000APresumption failed: ( a == b )\\u000Asrc\\here, 7.\\u000A( why )."
                     "\\u000AError code: 0xe0001234 - Unknown error. Error code: 0xe0001234\n"
                     "no such kind\n"
                     "Internal Program Error:\\u000AAssertion failed: (  )\\u000Asrc\\here, 7.\\u000A(  ).\n"
                     "y is corrupted.\n");
    EXPECT_FALSE(ThreadErrorMode.Get()->ErrorReported) << "another thread's report";
    const auto failure = Raised<CInternalError>([] {
        Platform::SetLastError(0x1F);
        FailAssertionWithLastError(u"f", 3);
    });
    EXPECT_EQ(failure ? failure->GetMessageText() : u"", u"Internal Program Error:\nf, 3.\nError code: 0x1f");
    EXPECT_EQ(Raised<CMemoryException>([] { GenerateMemoryException(); })->GetMessageText(), u"Not enough memory!");
}
