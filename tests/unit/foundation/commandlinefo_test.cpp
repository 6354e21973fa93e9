#include "foundation/inc/commandlinefo.h"

#include "tests/support/folder.h"
#include "tests/support/text.h"

using namespace Tsx;

namespace {

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

TEST(Splitter, Splits) {
    for (const auto& [line, tokens] : {std::pair(u" \t\r\n ", u""),
                                       {u"a\u2003 b", u"[a][b]"},
                                       {u"\"a  b\"", u"[a  b]"},
                                       {u"\"a\"\"b\"", u"[a\"b]"},
                                       {u"a\"\"b", u"[ab]"},
                                       {u"\"\"\"\"", u"[\"]"},
                                       {u"\"\" \"\"", u"[][]"},
                                       {u"\"a \"\"", u"[a \"]"},
                                       {u"\"", u"[]"},
                                       {u"-s:\"two words\"x -b", u"[-s:two wordsx][-b]"},
                                       {u"c:\\a\\\"b c\"\\ d", u"[c:\\a\\b c\\][d]"},
                                       {u"@ @@ @@@x \"@\"", u"[@][@][@@x][@]"},
                                       {u"a\xD83D\xDE00 \xDE00", u"[a\xD83D\xDE00][\xDE00]"}}) {
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
        EXPECT_EQ(error ? error->cause : 0, cause) << Readable(file.View());
        EXPECT_EQ(error ? error->fileName : u"", file);
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
    EXPECT_TRUE(Raised<CInternalError>([&] { parser.GetToken(-1); }));
    EXPECT_TRUE(Raised<CInternalError>([&] { parser.GetToken(9); }));
}
