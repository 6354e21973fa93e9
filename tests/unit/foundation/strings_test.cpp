// Strings: their blocks, long random runs against the standard library's, threads, sorting, conversion, formatting, and
// how a command line is split.
#include "foundation/inc/unicodestring.h"

#include "foundation/inc/commandlinefo.h"
#include "foundation/inc/format.h"
#include "foundation/inc/stringsort.h"
#include "platform/inc/text.h"
#include "tests/support/folder.h"
#include "tests/support/recordinghandler.h"
#include <limits>
#include <random>

using namespace Tsx;

namespace {

struct CProbe : CUnicodeString {
    static const CStringBlock<char16_t>* BlockOf(const CUnicodeString& text) { return text.*&CProbe::block; }
};

void ExpectSoundBlock(const CUnicodeString& text) {
    const auto* block = CProbe::BlockOf(text);
    const std::int32_t size = block->BlockSize;
    const bool isEmptyOne = block == &EmptyStringBlock<char16_t>;
    ASSERT_EQ(block->Characters[block->Length], u'\0');
    ASSERT_TRUE(isEmptyOne ? block->RefCount == 2 && size == 2 : block->RefCount >= 1);
    ASSERT_TRUE(isEmptyOne || size >= 2 * block->Length + 14);
    ASSERT_TRUE(isEmptyOne || size > 128 || size == 32 || size == 64 || size == 128);
}

void WriteIntoBuffer(CUnicodeString& text, std::int32_t more) {
    const std::int32_t length = text.Length();
    *text.GetBuffer(length + more + 1) = u'#';
    text.SetLength(length);
}

/// The tokens of a line, each in brackets.
CUnicodeString Split(const CUnicodeString& line) {
    CArray<CUnicodeString> tokens;
    tokens.Append(u"kept");
    SplitCommandLine(tokens, line);
    CUnicodeString text;
    for (std::int32_t i = 1; i < tokens.Size(); ++i) {
        text += u"[" + tokens[i] + u"]";
    }
    return text;
}

/// What a response file names another one by.
std::string Reference(const CUnicodeString& path) {
    return "\"@" + std::string(path.ToNarrow(AnsiCodePage).Text()) + "\"";
}

} // namespace

TEST(StringBlocks, SizesOfTheClasses) {
    const auto appendBeyond = [](auto text, std::int32_t largest) {
        EXPECT_TRUE(Raised<CMemoryException>([&text, largest] {
            text.GetBuffer(largest);
            text.SetLength(largest);
            text.Append('x');
        }));
    };
    appendBeyond(CUnicodeString(), 0x3FFFFFF8);
    appendBeyond(CString(), 0x7FFFFFF2);
    for (const auto& [length, blockSize] :
         {std::pair(9U, 32), {10, 64}, {25, 64}, {26, 128}, {57, 128}, {58, 130}, {1000, 2014}}) {
        const CUnicodeString text(std::u16string(length, u'x').c_str());
        EXPECT_EQ(CProbe::BlockOf(text)->BlockSize, blockSize) << length;
    }
    CUnicodeString grown(std::u16string(100, u'x').c_str());
    grown.Append(u'y');
    EXPECT_EQ(CProbe::BlockOf(grown)->BlockSize, 2 * 120 + 14) << "a fifth of headroom";
}

TEST(StringModel, BehavesAsTheStandardOne) {
    std::mt19937 random(1971);
    constexpr std::size_t count = 8;
    std::vector<CUnicodeString> ours(count);
    std::vector<std::u16string> model(count);
    std::size_t i = 0;
    std::size_t j = 0;
    std::int32_t n = 0;
    std::size_t twinsN = 0; // the same
    constexpr std::u16string_view digits = u"0123456789012345678901234567890123456789";
    // Each row does the same to a string, from another that may be itself, and to its twin.
    const std::pair<std::function<void()>, std::function<void()>> operations[] = {
        {[&] { ours[i].Clear(); }, [&] { model[i].clear(); }},
        {[&] { ours[i] = ours[j]; }, [&] { model[i] = model[j]; }},
        {[&] { ours[i] += ours[j]; }, [&] { model[i] += std::u16string(model[j]); }},
        {[&] { ours[i] = ours[j] + ours[i]; }, [&] { model[i] = model[j] + model[i]; }},
        {[&] { std::swap(ours[i], ours[j]); }, [&] { std::swap(model[i], model[j]); }},
        {[&] { ours[i].Append(digits[twinsN % 10]); }, [&] { model[i] += digits[twinsN % 10]; }},
        {[&] { ours[i].Append(ours[i].Text() + ours[i].Length() / 2, (ours[i].Length() + 1) / 2); },
         [&] { model[i] += std::u16string(model[i].substr(model[i].size() / 2)); }},
        {[&] { ours[i].Assign(digits.data(), n % 41); }, [&] { model[i] = digits.substr(0, twinsN % 41); }},
        {[&] { ours[i] = ours[j].Mid(n, n); },
         [&] { model[i] = model[j].substr(std::min(twinsN, model[j].size()), twinsN); }},
        {[&] { ours[i] = ours[j].Right(n); },
         [&] { model[i] = model[j].substr(model[j].size() - std::min(twinsN, model[j].size())); }},
        {[&] { WriteIntoBuffer(ours[i], n); }, [&] { std::fill_n(model[i].begin(), model[i].empty() ? 0 : 1, u'#'); }}};
    for (int step = 0; step < 300000; ++step) {
        i = random() % count;
        j = random() % count;
        twinsN = random() % 70;
        n = static_cast<std::int32_t>(twinsN);
        const auto& [change, changeTwin] = operations[model[i].size() > 3000 ? 0 : random() % std::size(operations)];
        change();
        changeTwin();
        ASSERT_EQ(ours[i].View(), model[i]) << "step " << step;
        std::for_each(ours.begin(), ours.end(), &ExpectSoundBlock);
        ASSERT_FALSE(testing::Test::HasFatalFailure()) << "step " << step;
        ASSERT_EQ(ours[i] < ours[j], model[i] < model[j]);
    }
}

TEST(StringThreads, ShareCopyAndDropTheSameStrings) {
    const CUnicodeString shared(u"shared by all of them");
    OnThreads(4, [&shared](int thread) {
        std::vector<CUnicodeString> own(25);
        for (std::size_t i = 0; i < 20000; ++i) {
            own[i % 25] = i % 3 == 0 ? shared + CUnicodeString::FromInt(thread) : shared;
            own[i % 7] += i % 5 == 0 ? u"!" : u"";
        }
    });
    EXPECT_EQ(CProbe::BlockOf(shared)->RefCount, 1);
}

TEST(StringSort, SortsByCharacterCodes) {
    std::mt19937 random(33);
    for (int round = 0; round < 2000; ++round) {
        CArray<CUnicodeString> strings;
        std::vector<std::u16string> model(round < 1990 ? random() % 40 : 5000);
        for (std::u16string& text : model) {
            for (const auto length = random() % 3; text.size() < length;) {
                text += u"aZ\u00E9\uFFFF"[random() % 4];
            }
            strings.Append(text.c_str());
        }
        SortStrings(strings);
        std::sort(model.begin(), model.end());
        for (std::size_t i = 0; i < model.size(); ++i) {
            ASSERT_EQ(strings[static_cast<std::int32_t>(i)].View(), model[i]) << "round " << round;
        }
    }
}

TEST(UnicodeString, SharesAndWritesAfterCopy) {
    CUnicodeString first(u"text");
    const CUnicodeString second(first);
    EXPECT_EQ(first.Text(), second.Text()) << "a copy shares the block";
    first.Append(u"!", 1);
    EXPECT_EQ(first + u' ' + second, u"text! text");
    EXPECT_EQ(second.Mid(2, 0).Text(), CUnicodeString().Text()) << "empty parts share the empty block";
    first.GetBuffer(-1);
    first.SetLength(-1);
    EXPECT_EQ(first, u"");
    const char16_t* volatile none = nullptr; // of which no compiler draws conclusions
    EXPECT_EQ(none + (first += none) + none, none);
    EXPECT_GT(second.CompareNoCase(none), 0);
}

TEST(UnicodeString, ReadsNumbersAndSwitches) {
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    using TRow = std::pair<const char16_t*, std::int32_t>;
    for (const auto& [text, expected] :
         {TRow(u" 12\t", 12), TRow(u"+\uFF17", 7), TRow(u"-1", -1), TRow(u"\u0661\u06F22", 122),
          TRow(u"\u205F\u1816\u1040\u3000", 60), TRow(u"2147483647", std::numeric_limits<std::int32_t>::max()),
          TRow(u"-\u0F22\u0F21\u0F24\u0F27\u0F24\u0F28\u0F23\u0F26\u0F24\u0F28", least)}) {
        std::int32_t value = 0;
        EXPECT_TRUE(CUnicodeString(text).ToInt(value) && value == expected) << Readable(text);
    }
    for (const char16_t* text :
         {u"2147483648", u"-2147483649", u"12a", u"", u"+-5", u"1 2", u"\u00B2", u"99999999999999999999"}) {
        std::int32_t value = 7;
        EXPECT_TRUE(!CUnicodeString(text).ToInt(value) && value == 7) << Readable(text);
    }
    bool on = false;
    EXPECT_TRUE(CUnicodeString(u" YES ").ToBool(on) && on);
    EXPECT_TRUE(CUnicodeString(u"Off").ToBool(on) && !on);
    EXPECT_FALSE(CUnicodeString(u"2").ToBool(on));
    EXPECT_EQ(CUnicodeString::FromInt(least) + CUnicodeString::FromHex(0xDEADBEEF), u"-2147483648deadbeef");
    CUnicodeString spaced(u"\t\u00A0\u2003 a b \u3000\r\n");
    spaced.Trim();
    EXPECT_EQ(spaced, u"a b");
}

TEST(UnicodeString, ConvertsToCodePagesAndBackUpToTheFirstNull) {
    const CUnicodeString text(u"\u00FC\u043F \U0001F600");
    const CString utf8 = text.ToNarrow(Platform::CodePageUtf8);
    EXPECT_EQ(utf8.View(), "\xC3\xBC\xD0\xBF \xF0\x9F\x98\x80");
    EXPECT_EQ(CUnicodeString(utf8.Text(), Platform::CodePageUtf8), text);
    EXPECT_TRUE(CUnicodeString(u"x").ToNarrow(4711).IsEmpty()) << "no such code page";
    constexpr std::size_t third = 30000;
    std::u16string wide(3 * third, u'a');
    std::string narrow(third, 'a');
    for (std::size_t i = third; i < 2 * third; ++i) {
        wide[i] = u'\u20AC';
        narrow += "\xE2\x82\xAC";
    }
    narrow += std::string(third, 'a');
    const CUnicodeString units((wide + u'\0' + wide).data(), 4 * static_cast<std::int32_t>(third));
    EXPECT_TRUE(units.ToNarrow(Platform::CodePageUtf8).View() == narrow);
    const auto made = CUnicodeString::FromNarrow((narrow + '\0' + narrow).data(), 200'000, Platform::CodePageUtf8);
    EXPECT_TRUE(made.View() == wide);
    EXPECT_EQ(CProbe::BlockOf(made)->BlockSize, 2 * 90'000 + 14) << "no room for bytes that became no characters";
}

TEST(Format, FollowsWidePrint) {
    const auto check = [](const CUnicodeString& result, const char16_t* expected) { EXPECT_EQ(result, expected); };
    check(CUnicodeString::Format(u"%d.%02d|%5d|%-5d|%+d", 5, 0, 42, 42, 7), u"5.00|   42|42   |+7");
    check(CUnicodeString::Format(u"%08lx|%X|%#x|%u", 0x040904B0U, 255, 255, -1), u"040904b0|FF|0xff|4294967295");
    check(CUnicodeString::Format(u"%lld %I64d", std::int64_t{-9000000000}, std::int64_t{9000000000}),
          u"-9000000000 9000000000");
    check(CUnicodeString::Format(u"%s/%.2s/%6s/%-6s|", u"ab", u"abc", u"x", u"x"), u"ab/ab/     x/x     |");
    check(CUnicodeString::Format(u"%*d%c100%% %.3d %o %i", 4, 7, u'!', 5, 8, -3), u"   7!100% 005 10 -3");
    check(CUnicodeString::Format(u"%p", reinterpret_cast<const void*>(0xABCDEF)), u"0000000000ABCDEF");
    for (const std::size_t length : {0U, 255U, 256U, 257U, 5000U}) {
        const std::u16string argument(length, u'x');
        EXPECT_EQ(CUnicodeString::Format(u"%s", argument.c_str()), argument.c_str()) << length;
    }
    char16_t buffer[4];
    const CFormatArgument text(u"abcd");
    EXPECT_EQ(FormatText(buffer, 4, u"%s", &text, 1), 4) << "the bound is exact";
    EXPECT_EQ(FormatText(buffer, 3, u"%s", &text, 1), -1);
    for (const auto& wrong :
         {+[] { CUnicodeString::Format(u"%s", 1); }, +[] { CUnicodeString::Format(u"%d", u"text"); },
          +[] { CUnicodeString::Format(u"%d %d", 1); }, +[] { CUnicodeString::Format(u"%q", 1); },
          +[] { CUnicodeString::Format(u"50%", 1); }}) {
        EXPECT_TRUE(Raised<CInternalError>(wrong));
    }
}

TEST(DescribeAddress, NamesTheModule) {
    static const int here = 0;
    EXPECT_TRUE(CUnicodeString::DescribeAddress(&here).View().find(u"strings_test") != std::u16string_view::npos);
    EXPECT_EQ(CUnicodeString::DescribeAddress(nullptr), u"0x0000000000000000");
}

TEST(Splitter, Splits) {
    for (const auto& [line, tokens] :
         {std::pair(u" \t\r\n ", u""),
          {u"a\u2003 \"b  c\" \"d\"\"e\" f\"\"g \"\"\"\" \"\" \"\"", u"[a][b  c][d\"e][fg][\"][][]"},
          {u"-s:\"two words\"x -b c:\\a\\\"b c\"\\ d", u"[-s:two wordsx][-b][c:\\a\\b c\\][d]"},
          {u"@ @@ @@@x \"@\" a\xD83D\xDE00 \xDE00", u"[@][@][@@x][@][a\xD83D\xDE00][\xDE00]"},
          {u"\"a \"\"", u"[a \"]"},
          {u"\"", u"[]"}}) {
        EXPECT_EQ(Split(line), tokens) << Readable(line);
    }
}

// Of the files 0 to 65 each names the next: the last is inside 64 others of which 1 is the first.
TEST(Splitter, ResponseFilesStandInTheirPlace) {
    const CTestFolder files;
    const CUnicodeString empty = files.Write(u"empty file", "");
    const CUnicodeString inner = files.Write(u"inner", "\xEF\xBB\xBF-s:\"x y\"\r\n\xE2\x82\xAC @@z");
    const CUnicodeString outer = files.Write(u"outer", "1 " + Reference(inner) + "\n2");
    EXPECT_EQ(Split(u"a @" + outer + u" b \"@" + empty + u"\" c"), u"[a][1][-s:x y][\x20AC][@z][2][b][c]");
    const CUnicodeString last = files.Write(u"65", "-x");
    for (std::int32_t i = 0; i < 65; ++i) {
        const CUnicodeString next = files / CUnicodeString::FromInt(i + 1).Text();
        files.Write(CUnicodeString::FromInt(i).Text(), Reference(next));
    }
    const CUnicodeString leaf = files.Write(u"leaf", "y");
    const CUnicodeString self = files.Write(u"self", "a " + Reference(files / u"self"));
    CUnicodeString many;
    for (int i = 0; i < 4096; ++i) {
        many += u"@" + leaf + u" ";
    }
    EXPECT_EQ(Split(u"@" + (files / u"1")), u"[-x]");
    EXPECT_EQ(Split(many).Length(), 3 * 4096);
    for (const auto& [line, cause, file] : {std::tuple(u"@" + (files / u"0"), FC_TooManyOpenFiles, last),
                                            {u"@" + self, FC_TooManyOpenFiles, self},
                                            {many + u"@" + self, FC_TooManyOpenFiles, self},
                                            {u"a @" + files / u"missing", FC_FileNotFound, files / u"missing"}}) {
        const auto error = Raised<CFileException>([&text = line] { Split(text); });
        EXPECT_TRUE(error->cause == cause && error->fileName == file) << Readable(error->fileName.View());
    }
}

TEST(Splitter, SortsTokensByTheirOption) {
    CCommandLineParser parser;
    parser.Tokenize(u"-s:x /S -:y - plain --r:a:b -s: \"\" /");
    parser.ClassifyTokens();
    parser.ClassifyTokens();
    EXPECT_EQ(parser.Options.GetItemCount(), 9) << "built anew";
    for (const auto& [name, expected] :
         {std::pair(u"s", u"[x][][]"), {u"", u"[y][-][plain][][/]"}, {u"-R", u"[a:b]"}, {u"x", u""}}) {
        CUnicodeString values;
        for (std::int32_t i = parser.Options.GetFirstPosition(name); i != NoPosition;
             i = parser.Options.GetNextPosition(name, i)) {
            values += u"[" + parser.Options.GetValueAt(i) + u"]";
        }
        EXPECT_EQ(values, expected) << Readable(name);
    }
    EXPECT_EQ(parser.GetToken(1), u"/S");
    ExpectRefused({[&] { parser.GetToken(-1); }, [&] { parser.GetToken(9); }});
}
