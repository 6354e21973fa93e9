#include "foundation/inc/textstream.h"

#include "platform/inc/text.h"
#include "tests/support/memoryfile.h"
#include "tests/support/recordinghandler.h"

using namespace Tsx;
using namespace std::string_literals;

namespace {

/// A file that ends earlier than it says.
struct CShrinking : CMemoryFile {
    using CMemoryFile::CMemoryFile;
    std::int64_t GetLength() const override { return CMemoryFile::GetLength() + 2; }
};

/// As the ANSI code page of this system has it.
CUnicodeString Ansi(std::string_view bytes) {
    return CUnicodeString::FromNarrow(bytes.data(), static_cast<std::int32_t>(bytes.size()), AnsiCodePage);
}

} // namespace

TEST(TextFile, TellsTheEncodingByTheMark) {
    const std::pair<std::string, CUnicodeString> rows[] = {
        {"", u""},
        {"\0"s, u" "},
        {"\xFF", Ansi("\xFF")},
        {"\xFF\xFE", u""},
        {"\xEF\xBB\xBF", u""},
        {"\xEF\xBBxy", Ansi("\xEF\xBBxy")},
        {"\xFF\xFEx\0\xAC\x20\0\0\n\0"s, u"x\x20AC \n"},
        {"\xFE\xFF\0x\x20\xAC"s, u"x\x20AC"},
        {"\xFF\xFE\x3D\xD8\x00\xDE\x00\xDE"s, u"\xD83D\xDE00\xDE00"},
        {"\xFF\xFE\xFF\xFE"s, u"\xFEFF"}, // a second mark is text
        {"\xEF\xBB\xBFx\xE2\x82\xAC\xF0\x9F\x98\x80\0\xFFz"s, u"x\x20AC\xD83D\xDE00 \xFFFDz"},
        {"x\0y\0"s, u"x y "},
        {"\xEF\xBB\xBF" + std::string(50'000, 'x'), std::u16string(50'000, u'x').c_str()}};
    for (const auto& [bytes, text] : rows) {
        CMemoryFile file(bytes);
        EXPECT_EQ(ReadText(file, AnsiCodePage), text);
    }
    CMemoryFile odd("\xFF\xFEx");
    const auto error = Raised<CCheckException>([&] { ReadText(odd, AnsiCodePage); });
    EXPECT_EQ(error ? error->GetMessageText() : u"", u"The text file memory.bin contains invalid characters.");
    for (const std::string& bytes : {""s, "x"s, "uvwxyz"s, "\xFF\xFEx\0"s, "\xEF\xBB\xBFx"s}) {
        CShrinking file(bytes);
        const auto early = Raised<CFileException>([&file] { ReadText(file, AnsiCodePage); });
        EXPECT_TRUE(early && early->cause == FC_EndOfFile && early->fileName == u"memory.bin") << bytes;
    }
}

TEST(TextStream, WritesTheEncodingOfItsTarget) {
    for (const bool throughArchive : {false, true}) {
        for (const auto& [encoding, start, bytes] :
             {std::tuple(TE_Ansi, "", "xy\r\nuv"s),
              {TE_Unicode, "", "\xFF\xFEx\0y\0\r\0\n\0u\0v\0"s},
              {TE_Unicode, "behind ", throughArchive ? "\xFF\xFEx\0y\0\r\0\n\0u\0v\0"s : "x\0y\0\r\0\n\0u\0v\0"s}}) {
            CMemoryFile file(start);
            file.Seek(0, SeekFromEnd);
            CArchive archive(&file, AD_Store);
            CTextStream stream(throughArchive ? nullptr : &file, throughArchive ? &archive : nullptr, encoding);
            stream.WriteUnicode(u"xy\r\n", 4);
            stream.WriteAnsi("uvwx", 2);
            stream.Flush();
            EXPECT_EQ(file.bytes, start + bytes) << encoding << throughArchive;
            EXPECT_EQ(file.flushes, throughArchive ? 0 : 1);
        }
    }
    CMemoryFile file;
    CTextStream utf8(&file, nullptr, TE_Ansi, Platform::CodePageUtf8);
    utf8.WriteUnicode(u"\x20AC", 1);
    const auto wrong = [&file] { CTextStream(&file, nullptr, 2).WriteUnicode(u"a", 1); };
    ExpectRefused({wrong, [&file] { CTextStream(&file, nullptr, 2).WriteAnsi("a", 1); }});
    EXPECT_EQ(file.bytes, "\xE2\x82\xAC") << "nothing in an encoding that is none";
    CTextStream(nullptr, nullptr, TE_Unicode).WriteAnsi(nullptr, 0); // to the debugger
}
