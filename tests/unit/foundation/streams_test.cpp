// Streams over a file: archives and text.
#include "foundation/inc/archive.h"

#include "foundation/inc/classregistry.h"
#include "foundation/inc/textstream.h"
#include "platform/inc/modules.h"
#include "platform/inc/text.h"
#include "tests/support/memoryfile.h"
#include "tests/support/recordinghandler.h"
#include <cstdlib>
#include <random>
#include <tuple>

using namespace Tsx;
using namespace std::string_literals;

namespace {

std::string Bytes(std::initializer_list<int> values) {
    return {values.begin(), values.end()};
}

struct CPoint : IObject {
    explicit CPoint(std::int32_t start = 0) : x(start) {}
    void Serialize(CArchive& archive) override { x == 0 ? void(x = archive.ReadCount()) : archive.WriteCount(x); }
    std::int32_t x;
};

struct CLine : CPoint {
    using CPoint::CPoint;
};

template <class T>
IObject* Create() {
    auto* object = new T;
    object->AddReference();
    return object;
}

const CClassRegistration PointClass(u"Point", typeid(CPoint), &Create<CPoint>);
const CClassRegistration LineClass(u"Line", typeid(CLine), &Create<CLine>);
const CClassRegistration EmptyFactory(u"Nothing", typeid(CArchive), [] { return static_cast<IObject*>(nullptr); });

/// A file that ends earlier than it says.
struct CShrinking : CMemoryFile {
    using CMemoryFile::CMemoryFile;
    std::int64_t GetLength() const override { return CMemoryFile::GetLength() + 2; }
};

} // namespace

TEST(Archive, TheFormsByteByByteAndBack) {
    CPoint point(7);
    CLine line(300);
    CMemoryFile file;
    CMemoryFile other;
    CArchive store(&file, AD_Store);
    for (const std::int32_t count : {0, 254, 255, -1, 0x01020304}) {
        store.WriteCount(count);
    }
    store << CString("a\0b", 3) << CString();
    for (IObject* object : std::initializer_list<IObject*>{nullptr, &point, &line, &point}) {
        store.WriteObject(object);
    }
    store.WriteClassName(u"");
    store.Close();
    EXPECT_EQ(file.bytes, Bytes({0, 0xFE}) + Bytes({0xFF, 0xFF, 0, 0, 0}) + Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0xFF}) +
                              Bytes({0xFF, 4, 3, 2, 1}) + Bytes({3, 'a', 0, 'b', 0}) + Bytes({1, 0, 3, 5}) + "Point" +
                              Bytes({7, 5, 4}) + "Line" + Bytes({0xFF, 44, 1, 0, 0, 2, 7, 0}));
    EXPECT_EQ(file.flushes, 0) << "the file is its owner's";
    store.Attach(&other, AD_Store);
    store.WriteObject(&point);
    EXPECT_EQ(store.GetPosition(), 8);
    store.Close();
    EXPECT_EQ(other.bytes, Bytes({1, 5}) + "Point" + Bytes({7})) << "another file, in which no class is named yet";

    file.position = other.position = 0;
    CArchive load(&file, AD_Load);
    for (const std::int32_t count : {0, 254, 255, -1, 0x01020304}) {
        EXPECT_EQ(load.ReadCount(), count);
    }
    CString text;
    CString empty("what was there");
    load >> text >> empty;
    EXPECT_TRUE(text == CString("a\0b", 3) && empty.IsEmpty());
    EXPECT_TRUE(load.ReadObject().IsEmpty());
    EXPECT_EQ(dynamic_cast<CPoint&>(*load.ReadObject()).x, 7);
    EXPECT_EQ(dynamic_cast<CLine&>(*load.ReadObject()).x, 300);
    EXPECT_EQ(dynamic_cast<CPoint&>(*load.ReadObject()).x, 7);
    load.Close();
    load.Attach(&other, AD_Load);
    EXPECT_EQ(dynamic_cast<CPoint&>(*load.ReadObject()).x, 7);
    EXPECT_TRUE(Raised<CInternalError>([] { static_cast<void>(*CHolder<IObject>()); })->line == 268);
}

TEST(Archive, CorruptDataRaisesTheNamedError) {
    constexpr const char16_t* corrupted = u"memory.bin is corrupted.";
    constexpr const char16_t* ended = u"An attempt was made to access memory.bin past its end.";
    using TRow = std::tuple<const char*, std::string, const char16_t*>;
    for (const auto& [name, bytes, message] :
         {TRow("count cut", Bytes({0xFF, 1, 2, 3}), ended), TRow("string cut", Bytes({1, 3, 'a', 'b'}), ended),
          TRow("huge string", Bytes({1, 0xFF, 0, 0, 0, 0x7F, 'a'}), ended),
          TRow("negative length", Bytes({1, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}), corrupted),
          TRow("unnamed class", Bytes({0}), corrupted), TRow("class out of order", Bytes({3, 5}) + "Point", corrupted),
          TRow("class named twice", Bytes({1, 0, 1, 0}), corrupted),
          TRow("negative class", Bytes({0xFF, 0xFE, 0xFF, 0xFF, 0xFF}), corrupted),
          TRow("unknown class", Bytes({1, 1, 'X'}), u"Invalid version of memory.bin.")}) {
        CMemoryFile file(bytes);
        CArchive archive(&file, AD_Load);
        CUnicodeString told;
        while (told.IsEmpty()) {
            try {
                archive.ReadObject();
            } catch (CException* error) {
                told = std::unique_ptr<CException>(error)->GetMessageText();
            }
        }
        EXPECT_EQ(told, message) << name;
    }
}

TEST(Archive, WrongCallsAndClassesWithoutAFactory) {
    CMemoryFile file;
    CArchive load(&file, AD_Load);
    CArchive store(&file, AD_Store);
    CArchive closed(&file, AD_Store);
    closed.Close();
    char byte = 0;
    IObject plain;
    RegisterClassModule(u"Forgotten", Platform::GetModuleHandle(u"kernel32.dll") ? u"kernel32.dll" : u"libc.so.6");
    RegisterClassModule(u"Missing", u"no such library.dll");
    ExpectRefused({[&] { store.Read(&byte, 1); }, [&] { load.Write(&byte, 0); }, [&] { load.Read(&byte, -1); },
                   [&] { store.Write(&byte, -1); }, [&] { closed.Write(&byte, 0); }, [&] { closed.Close(); },
                   [&] { closed.GetPosition(); }, [&] { store.Attach(&file, AD_Store); },
                   [] { const CArchive nothing(nullptr, AD_Store); },
                   [&] { CArchive(&file, AD_Store).WriteClassName(u"\x00E4"); }, [&] { store.WriteObject(&plain); },
                   [&] { plain.Serialize(store); }, [] { CreateObject(u"Nothing"); }});
    EXPECT_TRUE(Raised<CInternalError>([] { CreateObject(u"Forgotten"); })) << "its module registered no class";
    EXPECT_TRUE(IsClassKnown(u"Missing") && !IsClassKnown(u"Unheard"));
    for (const auto& [name, told] : {std::pair(u"Missing", u"no such library.dll"), {u"Unheard", u"Unheard"}}) {
        EXPECT_EQ(Raised<CCheckException>([wanted = name] { CreateObject(wanted); })->param0, told);
    }
    CMemoryFile full;
    full.full = true;
    {
        CArchive archive(&full, AD_Store);
        archive.WriteCount(1);
        EXPECT_EQ(Raised<CFileException>([&archive] { archive.Close(); })->cause, FC_DiskFull);
    }
    EXPECT_EQ(full.writes, 2) << "it is still attached, and what the destructor meets goes unnoticed";
}

TEST(ArchiveModel, PiecesOfAnySizeComeBackInOrder) {
    for (unsigned round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        std::mt19937 random(round);
        std::string model(round < 4 ? 0x100000 + 2'000'000 * round : 90'000, 'x');
        std::generate(model.begin(), model.end(), [&random] { return static_cast<char>(random()); });
        CString text(model.data(), static_cast<std::int32_t>(model.size()));
        constexpr std::int32_t bufferSizes[] = {0, 1, 7, 4096, 9000};
        const std::int32_t bufferSize = bufferSizes[random() % 5];
        CMemoryFile file;
        for (const bool storing : {true, false}) {
            file.position = 0;
            CArchive archive(&file, storing ? AD_Store : AD_Load, bufferSize);
            for (std::size_t at = 0; at < model.size();) {
                const std::string expected = model.substr(at, random() % (random() % 8 == 0 ? 10000 : 40));
                std::string piece(storing ? expected : std::string(expected.size(), '\0'));
                const auto size = static_cast<std::int32_t>(piece.size());
                storing ? archive.Write(piece.data(), size) : archive.Read(piece.data(), size);
                ASSERT_EQ(piece, expected);
                at += piece.size();
                ASSERT_EQ(archive.GetPosition(), static_cast<std::int64_t>(at));
                if (random() % 16 == 0) {
                    archive.Flush();
                    ASSERT_EQ(file.position, archive.GetPosition());
                }
            }
            storing ? archive << text : archive >> text;
            archive.Close();
            EXPECT_TRUE(text.View() == model && file.bytes.starts_with(model) && file.bytes.ends_with(model));
            EXPECT_EQ(file.position, file.GetLength());
            text = CString("what was there");
        }
        EXPECT_TRUE(bufferSize < 4096 || file.writes < 200 || round < 4) << "small pieces are collected";
    }
}

TEST(TextFile, TellsTheEncodingByTheMark) {
    using TRow = std::pair<std::string, CUnicodeString>;
    for (const auto& [bytes, text] :
         {TRow("", u""), TRow("\xFF", {"\xFF", AnsiCodePage}), TRow("\xFF\xFE", u""), TRow("\xEF\xBB\xBF", u""),
          TRow("\xEF\xBBxy", {"\xEF\xBBxy", AnsiCodePage}), TRow("\xFF\xFEx\0\xAC\x20\0\0\n\0"s, u"x\x20AC \n"),
          TRow("\xFE\xFF\0x\x20\xAC"s, u"x\x20AC"), TRow("\xFF\xFE\x3D\xD8\x00\xDE\x00\xDE"s, u"\xD83D\xDE00\xDE00"),
          TRow("\xFF\xFE\xFF\xFE"s, u"\xFEFF"),
          TRow("\xEF\xBB\xBFx\xE2\x82\xAC\xF0\x9F\x98\x80\0\xFFz"s, u"x\x20AC\xD83D\xDE00 \xFFFDz"),
          TRow("x\0y\0"s, u"x y "),
          TRow("\xEF\xBB\xBF" + std::string(50'000, 'x'), std::u16string(50'000, u'x').c_str())}) {
        CMemoryFile file(bytes);
        EXPECT_EQ(ReadText(file, AnsiCodePage), text);
    }
    CMemoryFile odd("\xFF\xFEx");
    EXPECT_EQ(Raised<CCheckException>([&] { ReadText(odd, AnsiCodePage); })->GetMessageText(),
              u"The text file memory.bin contains invalid characters.");
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
    ExpectRefused({[&file] { CTextStream(&file, nullptr, 2).WriteUnicode(u"a", 1); },
                   [&file] { CTextStream(&file, nullptr, 2).WriteAnsi("a", 1); }});
    EXPECT_EQ(file.bytes, "\xE2\x82\xAC") << "nothing in an encoding that is none";
    testing::internal::CaptureStderr();
    CTextStream debugger(nullptr, nullptr, TE_Unicode);
    debugger.WriteUnicode(u"wide", 2);
    debugger.WriteAnsi("narrow", 2); // up to its terminator
    debugger.WriteAnsi(nullptr, 0);
    const std::string shown = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(shown == "winarrow" || !std::getenv("TESSARIX_DEBUG_OUTPUT")) << shown;
}
