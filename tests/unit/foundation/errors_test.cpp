#include "foundation/inc/errors.h"

#include "foundation/inc/debugflags.h"
#include "foundation/inc/debugtrace.h"
#include "foundation/inc/messagenames.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/messagebox.h"
#include "tests/support/boxes.h"
#include "tests/support/folder.h"
#include "tests/support/recordinghandler.h"
#include <cstdlib>
#include <map>
#include <set>

using namespace Tsx;

TEST(StopDeathTest, StopsInTheDebuggerWhereASettingSays) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    SetDebugFlag(DebugReportMemoryErrorInMessageBox, true);
    WriteDebugOutput(u"leak");
    EXPECT_EQ(ShownBoxes, "Tessarix: leak 11\n");
    BoxAnswer = Platform::IdCancel;
    EXPECT_DEATH(WriteDebugOutput(u"leak"), "");
    SetDebugFlag(DebugReportMemoryErrorInMessageBox, false);
    SetDebugFlag(DebugBreakOnMemoryException, true);
    EXPECT_DEATH(GenerateMemoryException(), "");
    SetDebugFlag(DebugBreakOnMemoryException, false);
#ifndef _WIN32 // where the setting would be that of all programs of the user
    const CTestFolder registry;
    registry.Write(u"HKEY_CURRENT_USER.reg", "REGEDIT4\n[HKEY_CURRENT_USER\\Software\\Ostrel\\Tessarix]\n"
                                             "\"AssertStopMode\"=\"Always\"\n");
    setenv("TESSARIX_REGISTRY", registry.Place().c_str(), 1);
    EXPECT_DEATH(FailAssertion(u"f", 1), "");
    unsetenv("TESSARIX_REGISTRY");
#endif
}

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
    std::map<std::uint32_t, std::set<std::uint32_t>> found;
    for (std::uint32_t code = 1; code < 5000; ++code) {
        found[GetFileCause(code)].insert(code);
    }
    std::uint32_t cause = FC_FileNotFound;
    for (const auto& [text, codes] : rows) {
        EXPECT_EQ(found[cause], codes) << cause;
        EXPECT_EQ(GetFileErrorText(cause, 0, u"f"), text);
        ++cause;
    }
    EXPECT_EQ(cause - 1, FC_AlreadyExists);
    EXPECT_TRUE(found[FC_Generic].contains(1));
    EXPECT_EQ(GetFileErrorText(1, 0xE0001234, u"f"),
              u"An error occurred while accessing f: \nUnknown error. Error code: 0xe0001234");
    EXPECT_TRUE(Raised<CInternalError>([] { GetFileCause(0); }));
}

namespace {

constexpr auto Unspecified = static_cast<std::int32_t>(0x80004005); // E_FAIL

/// A component's description: a text, none, or a failure.
struct CDescription final : Platform::IErrorInfo {
    explicit CDescription(const char16_t* described, std::int32_t answer = Platform::SOk)
        : text(described), result(answer) {}
    ~CDescription() = default;

    const char16_t* text;
    std::int32_t result;
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
};

} // namespace

TEST(Errors, TextsComeFromTheComponentOrTheSystem) {
    EXPECT_EQ(GetLastErrorText(0), u"Unknown error. Error code: 0x0");
    EXPECT_GE(GetLastErrorText(193).Find(u'%'), 0) << "inserts stand as they are";
    // A wrapped Windows code has that code's text, without the line end.
    const CUnicodeString denied = GetCOMErrorText(static_cast<std::int32_t>(0x80070005), nullptr);
    EXPECT_TRUE(denied.Length() > 4 && denied + u"\r\n" == GetLastErrorText(5)) << Readable(denied.View());
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
    const auto first = Raised<CCOMException>([] { GenerateCOMException(Unspecified); });
    const auto second = Raised<CCOMException>([] { GenerateCOMException(Unspecified); });
    EXPECT_EQ(first->GetMessageText(), u"The mailbox is full\r\n") << "the thread's error info";
    EXPECT_TRUE(second->hresult == Unspecified && !second->errorInfo && told.references == 2) << "which was taken";
}

TEST(Errors, AThreadThatMustNotThrowShowsAndGoesOn) {
    CRecordingHandler handler;
    const CMessageHandlerScope scope(&handler);
    std::thread([&] {
        CThreadErrorMode& mode = *ThreadErrorMode.Get();
        mode.NoExceptions = true;
        EXPECT_FALSE(GenerateInternalError(InternalAssert, u"why", u"a == b", u"src\\here", 7, 0));
        GenerateCheckException(ERR_CANT_LOAD_DLL, u"x.dll", u"why");
        CDescription info(u"told");
        Platform::SetErrorInfo(0, &info);
        GenerateCOMException(Unspecified);
        EXPECT_EQ(info.references, 1U);
        EXPECT_TRUE(mode.ErrorReported);
        GenerateInternalError(InternalPresumeLastError, u"why", u"a == b", u"src\\here", 7, 0xE0001234);
        mode.NoExceptions = false;
        ExceptionsEnabled = false;
        GenerateCheckException(ERR_BAD_ARCHIVE, u"y", u"");
        ExceptionsEnabled = true;
    }).join();
    std::string shown;
    for (const CUnicodeString& text : handler.texts) {
        shown += Readable(text.View()) + "\n";
    }
    EXPECT_EQ(shown, "Internal Program Error:\\u000AAssertion failed: ( a == b )\\u000Asrc\\here, 7.\\u000A( why ).\n"
                     "Cannot load DLL x.dll.\\u000Awhy\n"
                     "told\n"
                     "Internal Program Error:\\u000APresumption failed: ( a == b )\\u000Asrc\\here, 7.\\u000A( why )."
                     "\\u000AError code: 0xe0001234 - Unknown error. Error code: 0xe0001234\n"
                     "y is corrupted.\n");
    EXPECT_EQ(ShownInstead([] { GenerateInternalError(4, u"", u"", u"f", 7, 0); }), 2U) << "and that there is no 4";
    EXPECT_FALSE(ThreadErrorMode.Get()->ErrorReported) << "another thread's report";
    Platform::SetLastError(0x1F);
    const auto failure = Raised<CInternalError>([] { FailAssertionWithLastError(u"f", 3); });
    EXPECT_EQ(failure->GetMessageText(), u"Internal Program Error:\nf, 3.\nError code: 0x1f");
    EXPECT_EQ(Raised<CMemoryException>([] { GenerateMemoryException(); })->GetMessageText(), u"Not enough memory!");
}
