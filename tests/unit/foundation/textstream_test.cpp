#include "foundation/inc/textstream.h"

#include "platform/inc/text.h"
#include "tests/support/memoryfile.h"
#include "tests/support/text.h"
#include "tests/support/textfiles.h"
#include <vector>

using namespace Tsx;
using namespace std::string_literals;
using namespace std::string_view_literals;

namespace {

CUnicodeString TextOf(const std::string& bytes) {
    CMemoryFile file(bytes);
    return ReadText(file, AnsiCodePage);
}

/// As the ANSI code page of this system has it.
CUnicodeString Ansi(std::string_view bytes) {
    return CUnicodeString::FromNarrow(bytes.data(), static_cast<std::int32_t>(bytes.size()), AnsiCodePage);
}

} // namespace

TEST(TextFile, TellsTheEncodingByTheMark) {
    struct Row {
        const char* name;
        std::string bytes;
        CUnicodeString text;
    };
    const Row rows[] = {
        {"empty", "", u""},
        {"one letter", "a", u"a"},
        {"one NUL", "\0"s, u" "},
        {"half a mark", "\xFF", Ansi("\xFF")},
        {"two letters", "ab", u"ab"},
        {"UTF-16 mark alone", "\xFF\xFE", u""},
        {"big-endian mark alone", "\xFE\xFF", u""},
        {"three letters", "abc", u"abc"},
        {"UTF-8 mark alone", "\xEF\xBB\xBF", u""},
        {"UTF-8 mark cut", "\xEF\xBB", Ansi("\xEF\xBB")},
        {"UTF-8 mark broken",
         "\xEF\xBB"
         "ab",
         Ansi("\xEF\xBB"
              "ab")},
        {"UTF-16",
         "\xFF\xFE"
         "A\0\xAC\x20\r\0\n\0"s,
         u"A\x20AC\r\n"},
        {"big-endian", "\xFE\xFF\0A\x20\xAC"s, u"A\x20AC"},
        {"UTF-16 NULs",
         "\xFF\xFE"
         "a\0\0\0b\0\0\0"s,
         u"a b "},
        {"surrogates, whole and alone", "\xFF\xFE\x3D\xD8\x00\xDE\x00\xDE"s, u"\xD83D\xDE00\xDE00"},
        {"a second mark is text", "\xFF\xFE\xFF\xFE"s, u"\xFEFF"},
        {"UTF-8",
         "\xEF\xBB\xBF"
         "A\xE2\x82\xAC\xF0\x9F\x98\x80",
         u"A\x20AC\xD83D\xDE00"},
        {"UTF-8 NULs",
         "\xEF\xBB\xBF"
         "a\0b"s,
         u"a b"},
        {"UTF-8 malformed",
         "\xEF\xBB\xBF"
         "a\xFFz",
         u"a\xFFFDz"},
        {"ANSI NULs", "a\0b\0"s, u"a b "},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(TextOf(row.bytes), row.text) << row.name;
    }
    const auto error = Raised<CCheckException>([] {
        TextOf("\xFF\xFE"
               "a");
    });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->GetMessageText(), u"The text file memory.bin contains invalid characters.");
}

TEST(TextFile, LongTextsAreReadWhole) {
    std::string utf8 = "\xEF\xBB\xBF";
    std::string utf16 = "\xFF\xFE";
    std::u16string text;
    for (int i = 0; i < 40000; ++i) {
        utf8 += i % 7 == 0 ? "\xE2\x82\xAC" : i % 1000 == 1 ? "\0"sv : "x";
        utf16 += i % 7 == 0 ? "\xAC\x20"sv : i % 1000 == 1 ? "\0\0"sv : "x\0"sv;
        text += i % 7 == 0 ? u'\x20AC' : i % 1000 == 1 ? u' ' : u'x';
    }
    EXPECT_TRUE(TextOf(utf8).View() == text);
    EXPECT_TRUE(TextOf(utf16).View() == text);
}

// A file that gets shorter while it is read.
TEST(TextFile, AnEarlyEndIsTold) {
    struct CShrinking : CMemoryFile {
        using CMemoryFile::CMemoryFile;
        std::int64_t GetLength() const override { return CMemoryFile::GetLength() + 2; }
    };
    for (const std::string& bytes : {""s, "a"s, "abcdef"s,
                                     "\xFF\xFE"
                                     "a\0"s,
                                     "\xEF\xBB\xBF"
                                     "a"s}) {
        CShrinking file(bytes);
        const auto error = Raised<CFileException>([&file] { ReadText(file, AnsiCodePage); });
        ASSERT_TRUE(error) << bytes;
        EXPECT_EQ(error->cause, 14U);
        EXPECT_EQ(error->fileName, u"memory.bin");
    }
}

TEST(TextFile, LinesAreWrittenAsUtf16) {
    struct Row {
        std::vector<CUnicodeString> lines;
        std::string bytes;
    };
    const CTextFiles files;
    const Row rows[] = {{{}, "\xFF\xFE"},
                        {{u""}, "\xFF\xFE"},
                        {{u"a", u"", u"\x20AC"},
                         "\xFF\xFE"
                         "a\0\r\0\n\0\r\0\n\0\xAC\x20"s},
                        {{std::u16string(5000, u'x').c_str()},
                         "\xFF\xFE" +
                             [] {
                                 std::string text;
                                 for (int i = 0; i < 5000; ++i) {
                                     text += "x\0"sv;
                                 }
                                 return text;
                             }()},
                        {{u"b"},
                         "\xFF\xFE"
                         "b\0"s}}; // the longer one before it is gone
    for (const Row& row : rows) {
        CArray<CUnicodeString> lines;
        CUnicodeString text;
        for (const CUnicodeString& line : row.lines) {
            text += (lines.IsEmpty() ? CUnicodeString() : u"\r\n") + line;
            lines.Append(line);
        }
        WriteTextFile(files.Path("written"), lines);
        EXPECT_EQ(files.Read("written"), row.bytes);
        EXPECT_EQ(ReadTextFile(files.Path("written")), text);
    }
    const auto error = Raised<CFileException>([&files] { ReadTextFile(files.Path("missing")); });
    EXPECT_EQ(error ? error->cause : 0, 2U);
}

TEST(TextStream, WritesTheEncodingOfItsTarget) {
    struct Row {
        const char* name;
        std::int32_t encoding;
        std::int64_t position;
        std::string bytes;
    };
    const Row rows[] = {{"ANSI", TE_Ansi, 0, "ab\r\ncd"},
                        {"Unicode", TE_Unicode, 0,
                         "\xFF\xFE"
                         "a\0b\0\r\0\n\0c\0d\0"s},
                        {"Unicode, joined", TE_Unicode, 10, "0123456789a\0b\0\r\0\n\0c\0d\0"s}};
    for (const Row& row : rows) {
        for (const bool throughArchive : {false, true}) {
            if (throughArchive && row.position > 0) {
                continue; // an archive counts from where it begins
            }
            CMemoryFile file(std::string("0123456789", static_cast<std::size_t>(row.position)));
            file.position = row.position;
            CArchive archive(&file, AD_Store);
            CTextStream stream(throughArchive ? nullptr : &file, throughArchive ? &archive : nullptr, row.encoding);
            stream.WriteUnicode(u"ab\r\n", 4);
            stream.WriteAnsi("cdef", 2);
            stream.Flush();
            EXPECT_EQ(file.bytes, row.bytes) << row.name << throughArchive;
            EXPECT_EQ(file.flushes, throughArchive ? 0 : 1);
        }
    }
    CMemoryFile file;
    CTextStream utf8(&file, nullptr, TE_Ansi, Platform::CodePageUtf8);
    utf8.WriteUnicode(u"\x20AC", 1);
    EXPECT_EQ(file.bytes, "\xE2\x82\xAC");
    EXPECT_TRUE(Raised<CInternalError>([&file] { CTextStream(&file, nullptr, 2).WriteUnicode(u"a", 1); }));
    CTextStream(nullptr, nullptr, TE_Unicode).WriteAnsi(nullptr, 0); // to the debugger
}
