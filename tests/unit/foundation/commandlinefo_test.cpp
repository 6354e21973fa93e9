#include "foundation/inc/commandlinefo.h"

#include "foundation/inc/filesystem.h"
#include "tests/support/text.h"
#include "tests/support/textfiles.h"
#include <random>
#include <vector>

using namespace Tsx;

namespace {

using TTokens = std::vector<CUnicodeString>;

TTokens Split(const CUnicodeString& line) {
    CArray<CUnicodeString> tokens;
    SplitCommandLine(tokens, line);
    return {tokens.begin(), tokens.end()};
}

/// A word that the splitter gives back as it is.
std::u16string Quoted(const std::u16string& word) {
    std::u16string quoted = word.size() > 1 && word[0] == u'@' ? u"\"@" : u"\"";
    for (const char16_t c : word) {
        quoted.append(c == u'"' ? 2 : 1, c);
    }
    return quoted + u'"';
}

} // namespace

TEST(Splitter, Splits) {
    struct Row {
        CUnicodeString line;
        TTokens tokens;
    };
    const Row rows[] = {
        {u"", {}},
        {u" \t\r\n ", {}},
        {u"a  b", {u"a", u"b"}},
        {u"\"a  b\"", {u"a  b"}},
        {u"\"a\"\"b\"", {u"a\"b"}},
        {u"a\"\"b", {u"ab"}},
        {u"\"\"", {u""}},
        {u"\"\"\"\"", {u"\""}},
        {u"\"\" \"\"", {u"", u""}},
        {u"\"a", {u"a"}},
        {u"\"a \"\"", {u"a \""}},
        {u"\"", {u""}},
        {u"-s:\"two words\"x -b", {u"-s:two wordsx", u"-b"}},
        {u"c:\\a\\\"b c\"\\ d", {u"c:\\a\\b c\\", u"d"}},
        {u"@ @@ @@@x \"@\"", {u"@", u"@", u"@@x", u"@"}},
        {u"a\xD83D\xDE00 \xDE00", {u"a\xD83D\xDE00", u"\xDE00"}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(Split(row.line), row.tokens) << Readable(row.line.View());
    }
}

TEST(Splitter, AnyWordsComeBackFromTheirQuotes) {
    constexpr std::u16string_view alphabet = u"a\" \t\\:-/@<\n\x3000\xD800";
    const unsigned seed = std::random_device()();
    std::mt19937 random(seed);
    for (int round = 0; round < 20000; ++round) {
        TTokens words(random() % 6);
        CUnicodeString line;
        for (CUnicodeString& word : words) {
            std::u16string letters(random() % 9, u' ');
            for (char16_t& letter : letters) {
                letter = alphabet[random() % alphabet.size()];
            }
            word = letters.c_str();
            line += CUnicodeString(Quoted(letters).c_str()) + (random() % 2 == 0 ? u" " : u"\r\n\t");
        }
        ASSERT_EQ(Split(line), words) << "seed " << seed << ": " << Readable(line.View());
    }
}

TEST(Splitter, ResponseFilesStandInTheirPlace) {
    const CTextFiles files;
    const CUnicodeString empty = files.Write("empty file", "");
    const CUnicodeString inner = files.Write("inner", "\xEF\xBB\xBF-s:\"x y\"\r\n\xE2\x82\xAC @@z");
    const CUnicodeString utf16 = files.Write("utf16", std::string("\xFF\xFEq\0\0\0r\0", 8));
    const CUnicodeString outer =
        files.Write("outer", "1 \"@" + std::string(inner.ToNarrow(AnsiCodePage).Text()) + "\"\n2");
    EXPECT_EQ(Split(u"a @" + outer + u" b \"@" + empty + u"\" @" + utf16 + u" c"),
              (TTokens{u"a", u"1", u"-s:x y", u"\x20AC", u"@z", u"2", u"b", u"q", u"r", u"c"}));

    CArray<CUnicodeString> target;
    target.Append(u"kept");
    const auto missing = Raised<CFileException>([&] { SplitCommandLine(target, u"a @" + files.Path("missing")); });
    ASSERT_TRUE(missing);
    EXPECT_EQ(missing->cause, 2U);
    EXPECT_EQ(target.Size(), 1);
}

// 0 names 1, which names 2 ...: the 65th is inside 64 others.
TEST(Splitter, ResponseFilesEndSomewhere) {
    const CTextFiles files;
    for (int i = 0; i < 66; ++i) {
        files.Write(std::to_string(i),
                    "@" + std::string(files.Path(std::to_string(i + 1)).ToNarrow(AnsiCodePage).Text()));
    }
    const CUnicodeString last = files.Write("65", "-x");
    const CUnicodeString leaf = files.Write("leaf", "y");
    const CUnicodeString self =
        files.Write("self", "a @" + std::string(files.Path("self").ToNarrow(AnsiCodePage).Text()));
    CUnicodeString many;
    for (int i = 0; i < 4096; ++i) {
        many += u"@" + leaf + u" ";
    }
    EXPECT_EQ(Split(u"@" + files.Path("1")), TTokens{u"-x"});
    EXPECT_EQ(Split(many).size(), 4096U);
    struct Row {
        const char* name;
        CUnicodeString line;
        CUnicodeString file;
    };
    for (const Row& row : {Row{"one too deep", u"@" + files.Path("0"), last},
                           {"itself", u"@" + self, self},
                           {"one too many", many + u"@" + self, self}}) {
        const auto error = Raised<CFileException>([&row] { Split(row.line); });
        ASSERT_TRUE(error) << row.name;
        EXPECT_EQ(error->cause, 4U) << row.name;
        CUnicodeString fullName = row.file;
        FileSystem::GetFullName(fullName);
        EXPECT_EQ(error->fileName, fullName) << row.name;
    }
}

TEST(Splitter, SortsTokensByTheirOption) {
    CCommandLineParser parser;
    parser.Tokenize(u"-s:x /S -:y - plain --r:a:b -s: \"\" /");
    parser.ClassifyTokens();
    struct Row {
        CUnicodeString name;
        TTokens values;
    };
    for (const Row& row :
         {Row{u"s", {u"x", u"", u""}}, {u"", {u"y", u"-", u"plain", u"", u"/"}}, {u"-R", {u"a:b"}}, {u"x", {}}}) {
        TTokens values;
        for (std::int32_t i = parser.Options.GetFirstPosition(row.name); i != NoPosition;
             i = parser.Options.GetNextPosition(row.name, i)) {
            values.push_back(parser.Options.GetValueAt(i));
        }
        EXPECT_EQ(values, row.values) << Readable(row.name.View());
    }
    parser.ClassifyTokens();
    EXPECT_EQ(parser.Options.GetItemCount(), 9) << "built anew";
    EXPECT_EQ(parser.GetToken(1), u"/S");
    for (const std::int32_t index : {-1, 9}) {
        EXPECT_TRUE(Raised<CInternalError>([&] { parser.GetToken(index); })) << index;
    }
}

TEST(Splitter, ManyOptionsKeepTheirOrder) {
    CCommandLineParser parser;
    CUnicodeString line;
    for (int i = 0; i < 30000; ++i) {
        line += CUnicodeString::Format(u"-%s:%d ", i % 3 == 0 ? u"a" : i % 3 == 1 ? u"A" : u"b", i);
    }
    parser.Tokenize(line);
    parser.ClassifyTokens();
    std::int32_t position = parser.Options.GetFirstPosition(u"a");
    for (int i = 0; i < 30000; i += i % 3 == 0 ? 1 : 2) {
        ASSERT_NE(position, NoPosition);
        ASSERT_EQ(parser.Options.GetValueAt(position), CUnicodeString::FromInt(i));
        position = parser.Options.GetNextPosition(u"a", position);
    }
    EXPECT_EQ(position, NoPosition);
}
