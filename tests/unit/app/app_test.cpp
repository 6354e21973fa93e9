// What the program decides by itself where no run of it shows that: names of options, and the state of its output.
#include "app/ConsoleTools.h"

#include "app/CorvaneApplication.h"
#include "platform/inc/console.h"
#include "platform/inc/lasterror.h"
#include "tests/support/standardoutput.h"
#include "tests/support/text.h"
#include <string>
#include <thread>

using namespace Tsx;
using namespace Console;

namespace {

/// A text in a new file: the bytes of UTF-16.
std::string Wide(std::u16string_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

// A missing handle raises, and what was decided for the one before is gone, also where the next one has its value.
void ForgetHandle() {
    const CStandardOutput none(EOutput::Missing);
    Platform::SetLastError(Platform::ErrorInvalidHandle);
    const auto failure = Raised<CLastErrorException>([] { ConsoleWrite(u"x"); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, Platform::ErrorInvalidHandle);
}

void WriteLine() {
    ConsoleWrite(u"a");
    ConsoleWrite(u"");
    ConsolePrintf(u"%s", u"\u00E4\n");
}

} // namespace

TEST(ConsoleTools, EachNewHandleIsDecidedAnew) {
    const std::string bytes =
        "a" + std::string(CUnicodeString(u"\u00E4").ToNarrow(Platform::GetConsoleOutputCP()).Text()) + "\r\n";
    ForgetHandle(); // a closed one may have had the value of one of these
    CStandardOutput fresh(EOutput::File);
    WriteLine();
    CStandardOutput old(EOutput::File, "old");
    WriteLine();
    EXPECT_EQ(old.Finish(), "old" + bytes);
    WriteLine(); // a file that was left has content when it comes back, and so goes on in bytes
    EXPECT_EQ(fresh.Finish(), Wide(u"\uFEFFa\u00E4\r\n") + bytes);
    ForgetHandle();
}

TEST(ConsoleTools, LongTextsOfTwoThreadsDoNotMix) {
    CStandardOutput output(EOutput::File);
    const auto write = [](char16_t letter) {
        for (int i = 0; i < 20; ++i) {
            ConsoleWrite(std::u16string(10'000, letter).c_str()); // several writes long
        }
    };
    std::thread other(write, u'a');
    write(u'b');
    other.join();
    const std::string content = output.Finish();
    ForgetHandle();
    EXPECT_EQ(content.size(), 2 + 800'000);
    for (std::size_t at = 2; at < content.size(); at += 20'000) {
        const auto letter = static_cast<char16_t>(content[at]);
        ASSERT_EQ(content.compare(at, 20'000, Wide(std::u16string(10'000, letter))), 0) << at;
    }
}

TEST(ConsoleApplication, OptionNames) {
    constexpr auto is = &CConsoleApplication::IsOptionName;
    EXPECT_TRUE(is(u"sUb", u"subject", u"sub") && is(u"Subject", u"subject", u"sub") && is(u"NOLOGO", u"NoLogo", u""));
    EXPECT_FALSE(is(u"su", u"subject", u"sub") || is(u"subjects", u"subject", u"sub") || is(u"", u"subject", u"s") ||
                 is(u"sx", u"subject", u"s") || is(u"NoLog", u"NoLogo", u"") || is(u"", u"NoLogo", u""));
    for (const auto& names : {std::pair{u"", u""}, {u"subject", u"b"}, {u"su", u"sub"}}) {
        EXPECT_TRUE(Raised<CInternalError>([&] { is(u"x", names.first, names.second); })) << Readable(names.first);
    }
}

TEST(CorvaneApplication, SplitsAddresses) {
    CUnicodeString name(u"old");
    CUnicodeString address(u"old");
    CCorvaneApplication::SplitAddress(u"\u3000Ann\t<\u00A0ann\u2003>", name, address);
    EXPECT_EQ(name + u"|" + address, u"Ann|ann");
    CCorvaneApplication::SplitAddress(u">", name, address);
    EXPECT_EQ(name + u"|" + address, u"|>");
    EXPECT_TRUE(Raised<CInternalError>([&] { CCorvaneApplication::SplitAddress(u"", name, address); }));
}
