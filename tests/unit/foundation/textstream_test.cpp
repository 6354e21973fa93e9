#include "foundation/inc/textstream.h"

#include "platform/inc/text.h"
#include "tests/support/folder.h"
#include "tests/support/memoryfile.h"
#include "tests/support/recordinghandler.h"
#include "tests/support/text.h"
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
        {"one NUL", "\0"s, u" "},
        {"half a mark", "\xFF", Ansi("\xFF")},
        {"two letters", "xy", u"xy"},
        {"UTF-16 mark alone", "\xFF\xFE", u""},
        {"UTF-8 mark alone", "\xEF\xBB\xBF", u""},
        {"UTF-8 mark cut", "\xEF\xBB", Ansi("\xEF\xBB")},
        {"UTF-8 mark broken", "\xEF\xBBxy", Ansi("\xEF\xBBxy")},
        {"UTF-16", "\xFF\xFEx\0\xAC\x20\r\0\n\0"s, u"x\x20AC\r\n"},
        {"big-endian", "\xFE\xFF\0x\x20\xAC"s, u"x\x20AC"},
        {"UTF-16 NULs", "\xFF\xFEx\0\0\0y\0\0\0"s, u"x y "},
        {"surrogates, whole and alone", "\xFF\xFE\x3D\xD8\x00\xDE\x00\xDE"s, u"\xD83D\xDE00\xDE00"},
        {"a second mark is text", "\xFF\xFE\xFF\xFE"s, u"\xFEFF"},
        {"UTF-8", "\xEF\xBB\xBFx\xE2\x82\xAC\xF0\x9F\x98\x80\0y"s, u"x\x20AC\xD83D\xDE00 y"},
        {"UTF-8 malformed", "\xEF\xBB\xBFx\xFFz", u"x\xFFFDz"},
        {"ANSI NULs", "x\0y\0"s, u"x y "},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(TextOf(row.bytes), row.text) << row.name;
    }
    const auto error = Raised<CCheckException>([] { TextOf("\xFF\xFEx"); });
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
    for (const std::string& bytes : {""s, "x"s, "uvwxyz"s, "\xFF\xFEx\0"s, "\xEF\xBB\xBFx"s}) {
        CShrinking file(bytes);
        const auto error = Raised<CFileException>([&file] { ReadText(file, AnsiCodePage); });
        ASSERT_TRUE(error) << bytes;
        EXPECT_EQ(error->cause, 14U);
        EXPECT_EQ(error->fileName, u"memory.bin");
    }
}

TEST(TextFile, LinesAreWrittenAsUtf16) {
    const CTestFolder files;
    const CUnicodeString path = files / u"written";
    const CUnicodeString longLine(std::u16string(5000, u'x').c_str());
    for (const std::vector<CUnicodeString>& rows :
         {std::vector<CUnicodeString>{longLine, u"y"}, {u"x", u"", u"\x20AC"}, {u""}, {}}) { // each shorter than before
        CArray<CUnicodeString> lines;
        CUnicodeString text;
        for (const CUnicodeString& line : rows) {
            text += (lines.IsEmpty() ? CUnicodeString() : u"\r\n") + line;
            lines.Append(line);
        }
        WriteTextFile(path, lines);
        EXPECT_EQ(ReadTextFile(path), text);
        EXPECT_EQ(files.Content(u"written").size(), static_cast<std::size_t>(2 + 2 * text.Length()));
        EXPECT_EQ(files.Content(u"written").substr(0, 2), "\xFF\xFE");
    }
    const auto error = Raised<CFileException>([&files] { ReadTextFile(files / u"missing"); });
    EXPECT_EQ(error ? error->cause : 0, 2U);
}

TEST(TextStream, WritesTheEncodingOfItsTarget) {
    struct Row {
        const char* name;
        std::int32_t encoding;
        std::int64_t position;
        std::string bytes;
    };
    const Row rows[] = {{"ANSI", TE_Ansi, 0, "xy\r\nuv"},
                        {"Unicode", TE_Unicode, 0, "\xFF\xFEx\0y\0\r\0\n\0u\0v\0"s},
                        {"Unicode, joined", TE_Unicode, 10, "0123456789x\0y\0\r\0\n\0u\0v\0"s}};
    for (const Row& row : rows) {
        for (const bool throughArchive : {false, true}) {
            if (throughArchive && row.position > 0) {
                continue; // an archive counts from where it begins
            }
            CMemoryFile file(std::string("0123456789", static_cast<std::size_t>(row.position)));
            file.position = row.position;
            CArchive archive(&file, AD_Store);
            CTextStream stream(throughArchive ? nullptr : &file, throughArchive ? &archive : nullptr, row.encoding);
            stream.WriteUnicode(u"xy\r\n", 4);
            stream.WriteAnsi("uvwx", 2);
            stream.Flush();
            EXPECT_EQ(file.bytes, row.bytes) << row.name << throughArchive;
            EXPECT_EQ(file.flushes, throughArchive ? 0 : 1);
        }
    }
    CMemoryFile file;
    CTextStream utf8(&file, nullptr, TE_Ansi, Platform::CodePageUtf8);
    utf8.WriteUnicode(u"\x20AC", 1);
    EXPECT_EQ(file.bytes, "\xE2\x82\xAC");
    const auto wrong = [&file] { CTextStream(&file, nullptr, 2).WriteUnicode(u"a", 1); };
    EXPECT_TRUE(Raised<CInternalError>(wrong));
    EXPECT_EQ(ShownInstead(wrong), 1U);
    EXPECT_EQ(file.bytes.size(), 3U) << "nothing in an encoding that is none";
    CTextStream(nullptr, nullptr, TE_Unicode).WriteAnsi(nullptr, 0); // to the debugger
}
