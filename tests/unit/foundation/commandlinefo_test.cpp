#include "foundation/inc/commandlinefo.h"

#include "tests/support/folder.h"
#include "tests/support/text.h"
#include <vector>

using namespace Tsx;

namespace {

using TTokens = std::vector<CUnicodeString>;

TTokens Split(const CUnicodeString& line) {
    CArray<CUnicodeString> tokens;
    SplitCommandLine(tokens, line);
    return {tokens.begin(), tokens.end()};
}

/// What a response file names another one by.
std::string Reference(const CUnicodeString& path) {
    return "\"@" + std::string(path.ToNarrow(AnsiCodePage).Text()) + "\"";
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

TEST(Splitter, ResponseFilesStandInTheirPlace) {
    const CTestFolder files;
    const CUnicodeString empty = files.Write(u"empty file", "");
    const CUnicodeString inner = files.Write(u"inner", "\xEF\xBB\xBF-s:\"x y\"\r\n\xE2\x82\xAC @@z");
    const CUnicodeString utf16 = files.Write(u"utf16", std::string("\xFF\xFEq\0\0\0r\0", 8));
    const CUnicodeString outer = files.Write(u"outer", "1 " + Reference(inner) + "\n2");
    EXPECT_EQ(Split(u"a @" + outer + u" b \"@" + empty + u"\" @" + utf16 + u" c"),
              (TTokens{u"a", u"1", u"-s:x y", u"\x20AC", u"@z", u"2", u"b", u"q", u"r", u"c"}));

    CArray<CUnicodeString> target;
    target.Append(u"kept");
    const auto missing = Raised<CFileException>([&] { SplitCommandLine(target, u"a @" + files / u"missing"); });
    ASSERT_TRUE(missing);
    EXPECT_EQ(missing->cause, 2U);
    EXPECT_EQ(target.Size(), 1);
}

// 0 names 1, which names 2 ...: the 65th is inside 64 others.
TEST(Splitter, ResponseFilesEndSomewhere) {
    const CTestFolder files;
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
    EXPECT_EQ(Split(u"@" + (files / u"1")), TTokens{u"-x"});
    EXPECT_EQ(Split(many).size(), 4096U);
    struct Row {
        const char* name;
        CUnicodeString line, file;
    };
    for (const Row& row : {Row{"one too deep", u"@" + (files / u"0"), last},
                           {"itself", u"@" + self, self},
                           {"one too many", many + u"@" + self, self}}) {
        const auto error = Raised<CFileException>([&row] { Split(row.line); });
        ASSERT_TRUE(error) << row.name;
        EXPECT_EQ(error->cause, 4U) << row.name;
        EXPECT_EQ(error->fileName, row.file) << row.name;
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
    for (int i = 0; i < 3000; ++i) {
        line += CUnicodeString::Format(u"-%s:%d ", i % 3 == 0 ? u"a" : i % 3 == 1 ? u"A" : u"b", i);
    }
    parser.Tokenize(line);
    parser.ClassifyTokens();
    std::int32_t position = parser.Options.GetFirstPosition(u"a");
    for (int i = 0; i < 3000; i += i % 3 == 0 ? 1 : 2) {
        ASSERT_NE(position, NoPosition);
        ASSERT_EQ(parser.Options.GetValueAt(position), CUnicodeString::FromInt(i));
        position = parser.Options.GetNextPosition(u"a", position);
    }
    EXPECT_EQ(position, NoPosition);
}
