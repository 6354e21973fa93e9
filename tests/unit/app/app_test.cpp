// What the program decides by itself: names of options, addresses, and the form of its output.
#include "app/ConsoleTools.h"

#include "app/CorvaneApplication.h"
#include "platform/inc/console.h"
#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/text.h"
#include "tests/support/folder.h"
#include "tests/support/standardoutput.h"
#include "tests/support/text.h"
#include <string>
#include <thread>

using namespace Tsx;
using namespace Console;

namespace {

/// Characters as the bytes of UTF-16.
std::string Wide(std::u16string_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

const std::string Mark = "\xFF\xFE";

/// Puts a handle in the place of the standard output for a block.
class CHandleScope {
public:
    explicit CHandleScope(Platform::Handle handle) : before(Platform::GetStdHandle(Platform::StdOutputHandle)) {
        Platform::SetStdHandle(Platform::StdOutputHandle, handle);
    }
    ~CHandleScope() { Platform::SetStdHandle(Platform::StdOutputHandle, before); }
    CHandleScope(const CHandleScope&) = delete;
    CHandleScope& operator=(const CHandleScope&) = delete;

private:
    Platform::Handle before;
};

// A missing handle raises, and what was decided for the one before is gone, also where the next one has its value.
void ForgetHandle() {
    const CHandleScope none(nullptr);
    Platform::SetLastError(Platform::ErrorInvalidHandle);
    const auto failure = Raised<CLastErrorException>([] { ConsoleWrite(u"x"); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, Platform::ErrorInvalidHandle);
}

} // namespace

TEST(ConsoleTools, WritesForWhatTheOutputIs) {
    struct Row {
        const char* name;
        EOutput kind;
        std::string before;
        const char16_t* text;
        std::string after;
    };
    const Row rows[] = {{"new file", EOutput::File, "", u"a\nb", Mark + Wide(u"a\r\nb")},
                        {"nothing into a new file", EOutput::File, "", u"", Mark},
                        {"file with content", EOutput::File, "old", u"\nb\r\n", "\r\nb\r\n"},
                        {"nothing into a file with content", EOutput::File, "old", u"", ""},
                        {"pipe", EOutput::Pipe, "", u"\n\n", "\r\n\r\n"},
                        {"terminal", EOutput::Terminal, "", u"a\u00E4\n", "a\xC3\xA4\r\n"},
                        {"null device", EOutput::NullDevice, "", u"a", ""}};
    for (const Row& row : rows) {
        if (row.kind == EOutput::Terminal && !CStandardOutput::HasTerminals) {
            continue; // the end-to-end tests have one
        }
        CStandardOutput output(row.kind, row.before);
        ForgetHandle();
        ConsolePrintf(u"%s", row.text);
        EXPECT_EQ(output.Finish(), row.before + row.after) << row.name;
    }
}

TEST(ConsoleTools, EachNewHandleIsDecidedAnew) {
    const CTestFolder folder;
    folder.Write(u"old", "old");
    const auto open = [&folder](const char16_t* name) {
        return Platform::CreateFile((folder / name).Text(), Platform::GenericWrite, Platform::FileShareRead, nullptr,
                                    Platform::OpenAlways, Platform::FileAttributeNormal, nullptr);
    };
    const Platform::Handle fresh = open(u"fresh");
    const Platform::Handle old = open(u"old");
    std::int64_t position = 0;
    ASSERT_TRUE(Platform::SetFilePointerEx(old, 0, position, Platform::FileEnd));
    ForgetHandle(); // a closed one may have had the value of one of these
    for (const Platform::Handle handle : {fresh, old, fresh}) {
        const CHandleScope scope(handle);
        ConsoleWrite(u"a");
        ConsoleWrite(u"b");
    }
    ForgetHandle();
    EXPECT_TRUE(Platform::CloseHandle(fresh));
    EXPECT_TRUE(Platform::CloseHandle(old));
    // A file that was left has content when it comes back, and so goes on in bytes.
    EXPECT_EQ(folder.Content(u"fresh"), Mark + Wide(u"ab") + "ab");
    EXPECT_EQ(folder.Content(u"old"), "oldab");
}

TEST(ConsoleTools, AHandleThatWasNeverThereIsAnInternalError) {
    // As at the first call of a process: there is no change to look at.
    const CHandleScope invalid(Platform::InvalidHandle());
    const auto failure = Raised<CLastErrorException>([] {
        Platform::SetLastError(Platform::ErrorInvalidHandle);
        ConsoleWrite(u"x");
    });
    EXPECT_TRUE(failure) << "the handle has changed";
    EXPECT_TRUE(Raised<CInternalError>([] { ConsoleWrite(u"x"); })) << "it has not changed";
    EXPECT_TRUE(Raised<CInternalError>([] { WriteBytes(nullptr, "x", 1); }));
    EXPECT_TRUE(Raised<CInternalError>([] { WriteBytes(Platform::GetStdHandle(Platform::StdErrorHandle), "x", -1); }));
}

TEST(ConsoleTools, LongTextsOfTwoThreadsDoNotMix) {
    constexpr int rounds = 20;
    const auto text = [](char16_t letter) { return std::u16string(10'000, letter); }; // several writes long
    const CTestFolder folder;
    folder.Write(u"file", "");
    {
        const Platform::Handle file = Platform::CreateFile((folder / u"file").Text(), Platform::GenericWrite, 0,
                                                           nullptr, Platform::OpenExisting, 0, nullptr);
        const CHandleScope scope(file);
        ConsoleWrite(u"");
        std::thread other([&] {
            for (int i = 0; i < rounds; ++i) {
                ConsoleWrite(text(u'a').c_str());
            }
        });
        for (int i = 0; i < rounds; ++i) {
            ConsoleWrite(text(u'b').c_str());
        }
        other.join();
        Platform::CloseHandle(file);
    }
    ForgetHandle();
    std::string rest = folder.Content(u"file").substr(Mark.size());
    EXPECT_EQ(rest.size(), 2 * rounds * Wide(text(u'a')).size());
    while (!rest.empty()) {
        const std::string whole = Wide(text(static_cast<char16_t>(rest[0])));
        ASSERT_TRUE(rest.starts_with(whole)) << rest.size() << " bytes from the end";
        rest.erase(0, whole.size());
    }
}

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

TEST(CorvaneApplication, SplitsAddresses) {
    struct Row {
        const char16_t *text, *name, *address;
    };
    constexpr Row rows[] = {{u"Ann Lee <ann>", u"Ann Lee", u"ann"},
                            {u"Ann < ann >", u"Ann", u"ann"},
                            {u"Ann < ann > ", u"", u"Ann < ann > "},
                            {u"<ann>", u"", u"ann"},
                            {u"a <b> <c>", u"a <b>", u"c"},
                            {u"ann", u"", u"ann"},
                            {u"Ann <ann", u"", u"Ann <ann"},
                            {u"ann>", u"", u"ann>"},
                            {u">", u"", u">"},
                            {u"<>", u"", u""},
                            {u"\u3000Ann\t<\u00A0ann\u2003>", u"Ann", u"ann"}};
    for (const Row& row : rows) {
        CUnicodeString name(u"old");
        CUnicodeString address(u"old");
        CCorvaneApplication::SplitAddress(row.text, name, address);
        EXPECT_EQ(name, row.name) << Readable(row.text);
        EXPECT_EQ(address, row.address) << Readable(row.text);
    }
    CUnicodeString unused;
    EXPECT_TRUE(Raised<CInternalError>([&] { CCorvaneApplication::SplitAddress(u"", unused, unused); }));
}
