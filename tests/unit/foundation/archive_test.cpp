#include "foundation/inc/archive.h"

#include "foundation/inc/classregistry.h"
#include "platform/inc/modules.h"
#include "tests/support/memoryfile.h"
#include "tests/support/recordinghandler.h"
#include <random>
#include <tuple>

using namespace Tsx;

namespace {

std::string Bytes(std::initializer_list<int> values) {
    return {values.begin(), values.end()};
}

class CPoint : public IObject {
public:
    explicit CPoint(std::int32_t start = 0) : x(start) {}
    std::int32_t x;
    void Serialize(CArchive& archive) override { x == 0 ? void(x = archive.ReadCount()) : archive.WriteCount(x); }
};

class CLine : public CPoint {
public:
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

} // namespace

TEST(Archive, TheFormsByteByByteAndBack) {
    CPoint point(7);
    CLine line(300);
    CMemoryFile file;
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

    file.position = 0;
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
    EXPECT_TRUE(Raised<CInternalError>([] { static_cast<void>(*CHolder<IObject>()); })->line == 268);
}

TEST(Archive, CorruptDataRaisesTheNamedError) {
    const auto string = [](CArchive& archive) {
        CString text;
        archive >> text;
    };
    const auto objects = [](CArchive& archive) {
        while (true) {
            archive.ReadObject();
        }
    };
    const auto count = [](CArchive& archive) { archive.ReadCount(); };
    constexpr const char* corrupted = "memory.bin is corrupted.";
    constexpr const char* ended = "An attempt was made to access memory.bin past its end.";
    using TRow = std::tuple<const char*, std::string, void (*)(CArchive&), const char*>;
    for (const auto& [name, bytes, read, message] :
         {TRow{"count cut", Bytes({0xFF, 1, 2, 3}), count, ended},
          {"string cut", Bytes({3, 'a', 'b'}), string, ended},
          {"huge string", Bytes({0xFF, 0, 0, 0, 0x7F, 'a'}), string, ended},
          {"negative length", Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0xFF}), string, corrupted},
          {"unnamed class", Bytes({0}), objects, corrupted},
          {"class out of order", Bytes({3, 5}) + "Point", objects, corrupted},
          {"class named twice", Bytes({1, 0, 1, 0}), objects, corrupted},
          {"negative class", Bytes({0xFF, 0xFE, 0xFF, 0xFF, 0xFF}), objects, corrupted},
          {"unknown class", Bytes({1, 1, 'X'}), objects, "Invalid version of memory.bin."}}) {
        CMemoryFile file(bytes);
        CArchive archive(&file, AD_Load);
        std::string told;
        try {
            read(archive);
        } catch (CException* error) {
            told = Readable(std::unique_ptr<CException>(error)->GetMessageText().View());
        }
        EXPECT_EQ(told, message) << name;
    }
}

TEST(Archive, WrongCallsAreInternalErrors) {
    CMemoryFile file;
    CArchive load(&file, AD_Load);
    CArchive store(&file, AD_Store);
    CArchive closed(&file, AD_Store);
    closed.Close();
    char byte = 0;
    IObject plain;
    RegisterClassModule(u"Forgotten", Platform::GetModuleHandle(u"kernel32.dll") ? u"kernel32.dll" : u"libc.so.6");
    ExpectRefused({[&] { store.Read(&byte, 1); }, [&] { load.Write(&byte, 0); }, [&] { load.Read(&byte, -1); },
                   [&] { store.Write(&byte, -1); }, [&] { closed.Write(&byte, 0); }, [&] { closed.Close(); },
                   [&] { closed.GetPosition(); }, [&] { store.Attach(&file, AD_Store); },
                   [] { const CArchive nothing(nullptr, AD_Store); },
                   [&] { CArchive(&file, AD_Store).WriteClassName(u"\x00E4"); }, [&] { store.WriteObject(&plain); },
                   [&] { plain.Serialize(store); }, [] { CreateObject(u"Nothing"); }});
    EXPECT_TRUE(Raised<CInternalError>([] { CreateObject(u"Forgotten"); })) << "its module registered no class";
}

TEST(Archive, ClassesWithoutAFactoryLookForTheirModule) {
    RegisterClassModule(u"Missing", u"no such library.dll");
    EXPECT_TRUE(IsClassKnown(u"Missing"));
    const auto missing = Raised<CCheckException>([] { CreateObject(u"Missing"); });
    EXPECT_TRUE(missing && missing->param0 == u"no such library.dll" && missing->param1 == GetLastErrorText(2));
    const auto unheard = Raised<CCheckException>([] { CreateObject(u"Unheard"); });
    EXPECT_TRUE(unheard && unheard->param0 == u"Unheard");
}

TEST(Archive, AFailedWriteIsToldByCloseAndNotByTheDestructor) {
    CMemoryFile file;
    file.full = true;
    {
        CArchive archive(&file, AD_Store);
        archive.WriteCount(1);
        EXPECT_EQ(Raised<CFileException>([&archive] { archive.Close(); })->cause, 13U);
        EXPECT_TRUE(archive.IsAttached());
    }
    EXPECT_EQ(file.writes, 2);
}

TEST(ArchiveModel, PiecesOfAnySizeComeBackInOrder) {
    const unsigned seed = std::random_device()();
    std::mt19937 random(seed);
    for (int round = 0; round < 60; ++round) {
        SCOPED_TRACE(testing::Message() << "seed " << seed << " round " << round);
        constexpr std::int32_t bufferSizes[] = {0, 1, 7, 4096, 9000};
        const std::int32_t bufferSize = bufferSizes[random() % 5];
        const auto pieceSize = [&] { return random() % (random() % 8 == 0 ? 10000 : 40); };
        CMemoryFile file;
        std::string model;
        CArchive store(&file, AD_Store, bufferSize);
        for (int step = 0; step < 300; ++step) {
            const std::string piece(pieceSize(), static_cast<char>(random()));
            store.Write(piece.data(), static_cast<std::int32_t>(piece.size()));
            model += piece;
            if (random() % 16 == 0) {
                store.Flush();
                ASSERT_EQ(file.bytes, model);
            }
            ASSERT_EQ(store.GetPosition(), static_cast<std::int64_t>(model.size()));
        }
        store.Flush();
        ASSERT_EQ(file.bytes, model);
        std::string text(round < 4 ? (std::size_t{1} << 20) + static_cast<std::size_t>(round) * 1'999'999 : 0, '\0');
        std::generate(text.begin(), text.end(), [n = 0U]() mutable { return static_cast<char>(n++ * 7 % 65'521); });
        const CString longText(text.data(), static_cast<std::int32_t>(text.size()));
        store << longText;
        store.Close();
        EXPECT_TRUE(bufferSize < 4096 || file.writes < 200) << "small pieces are collected";
        file.position = 0;
        CArchive load(&file, AD_Load, bufferSize);
        for (std::size_t at = 0; at < model.size();) {
            std::string piece(std::min<std::size_t>(pieceSize(), model.size() - at), '\0');
            load.Read(piece.data(), static_cast<std::int32_t>(piece.size()));
            ASSERT_EQ(piece, std::string_view(model).substr(at, piece.size()));
            at += piece.size();
            ASSERT_EQ(load.GetPosition(), static_cast<std::int64_t>(at));
            if (random() % 16 == 0) {
                load.Flush();
                ASSERT_EQ(file.position, static_cast<std::int64_t>(at));
            }
        }
        CString read("what was there");
        load >> read;
        EXPECT_TRUE(read == longText) << text.size();
        EXPECT_EQ(load.GetPosition(), file.GetLength());
    }
}
