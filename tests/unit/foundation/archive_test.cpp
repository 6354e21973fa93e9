#include "foundation/inc/archive.h"

#include "foundation/inc/classregistry.h"
#include "platform/inc/modules.h"
#include "tests/support/memoryfile.h"
#include "tests/support/recordinghandler.h"
#include <algorithm>
#include <random>

using namespace Tsx;

namespace {

/// What the action writes.
template <class TAction>
std::string Written(TAction action) {
    CMemoryFile file;
    CArchive archive(&file, AD_Store);
    action(archive);
    archive.Close();
    return file.bytes;
}

std::string Bytes(std::initializer_list<int> values) {
    return {values.begin(), values.end()};
}

class CPoint : public IObject {
public:
    CPoint() = default;
    explicit CPoint(std::int32_t start) : x(start) {}
    std::int32_t x = 0;
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

TEST(Archive, WritesTheFormsByteByByte) {
    struct Row {
        const char* name;
        void (*write)(CArchive&);
        std::string bytes;
    };
    // clang-format off
    const Row rows[] = {
        {"0", [](CArchive& a) { a.WriteCount(0); }, Bytes({0})},
        {"254", [](CArchive& a) { a.WriteCount(254); }, Bytes({0xFE})},
        {"255", [](CArchive& a) { a.WriteCount(255); }, Bytes({0xFF, 0xFF, 0, 0, 0})},
        {"-1", [](CArchive& a) { a.WriteCount(-1); }, Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0xFF})},
        {"0x01020304", [](CArchive& a) { a.WriteCount(0x01020304); }, Bytes({0xFF, 4, 3, 2, 1})},
        {"string", [](CArchive& a) { a << CString("a\0b", 3) << CString(); }, Bytes({3, 'a', 0, 'b', 0})},
        {"classes", [](CArchive& a) { for (const char16_t* name : {u"A", u"BC", u"A", u"", u"BC",
            u""}) { a.WriteClassName(name); } }, Bytes({1, 1, 'A', 3, 2, 'B', 'C', 0, 5, 0, 2, 4})},
        {"objects", [](CArchive& a) { CPoint p(7); CLine l(300);
            for (IObject* object : {static_cast<IObject*>(nullptr), static_cast<IObject*>(&p),
            static_cast<IObject*>(&l), static_cast<IObject*>(&p)}) { a.WriteObject(object); } }, Bytes({1, 0, 3,
            5}) + "Point" + Bytes({7, 5, 4}) + "Line" + Bytes({0xFF, 44, 1, 0, 0, 2, 7})},
    };
    // clang-format on
    for (const Row& row : rows) {
        EXPECT_EQ(Written(row.write), row.bytes) << row.name;
    }
}

TEST(Archive, ReadsObjectsBack) {
    CMemoryFile file(Bytes({1, 0, 3, 5}) + "Point" + Bytes({7, 5, 4}) + "Line" + Bytes({9, 2, 8, 0}));
    CArchive archive(&file, AD_Load);
    EXPECT_TRUE(archive.ReadObject().IsEmpty());
    const CHolder<IObject> point = archive.ReadObject();
    const CHolder<IObject> line = archive.ReadObject();
    EXPECT_EQ(dynamic_cast<CPoint&>(*point).x, 7);
    EXPECT_EQ(dynamic_cast<CLine&>(*line).x, 9);
    EXPECT_EQ(dynamic_cast<CPoint&>(*archive.ReadObject()).x, 8);
    EXPECT_TRUE(archive.ReadObject().IsEmpty());
    EXPECT_EQ(archive.GetPosition(), file.GetLength());
    EXPECT_TRUE(Raised<CInternalError>([] { static_cast<void>(*CHolder<IObject>()); })->line == 268);
}

// Each size first behind nothing, then behind one byte: around one and two buffers.
TEST(Archive, CrossesTheBordersOfTheBuffer) {
    // Each row: the size, and what has reached the file when it is written behind nothing and behind one byte.
    constexpr std::int32_t rows[][3] = {{4095, 0, 4096},    {4096, 4096, 4096}, {4097, 4097, 4096},
                                        {8190, 8190, 4096}, {8191, 8191, 8192}, {8192, 8192, 8193}};
    const std::string data(10'000, 'x');
    for (const auto& [size, alone, behindOne] : rows) {
        for (const std::int32_t lead : {0, 1}) {
            CMemoryFile file;
            CArchive store(&file, AD_Store);
            store.Write(data.data(), lead);
            store.Write(data.data(), size);
            EXPECT_EQ(file.GetLength(), lead == 0 ? alone : behindOne) << size;
            store.Close();
            EXPECT_LE(file.writes, 2) << size;
            EXPECT_EQ(file.flushes, 0) << "the file is its owner's";

            std::string back(data.size(), '\0');
            file.position = 0;
            CArchive load(&file, AD_Load);
            load.Read(back.data(), lead);
            load.Read(back.data(), size);
            EXPECT_LE(file.reads, 2) << size;
            EXPECT_TRUE(Raised<CFileException>([&] { load.Read(back.data(), 1); })) << size;
        }
    }
}

TEST(Archive, LongStringsComeBackWhole) {
    std::string bytes(5'000'001, '\0');
    std::generate(bytes.begin(), bytes.end(), [n = 0U]() mutable { return static_cast<char>(n++ * 7 % 65'521); });
    for (const std::size_t size : {std::size_t{1} << 20, (std::size_t{1} << 20) + 1, bytes.size()}) {
        const CString stored(bytes.data(), static_cast<std::int32_t>(size));
        CMemoryFile file(Written([&](CArchive& archive) { archive << stored; }));
        CArchive archive(&file, AD_Load);
        CString text("what was there");
        archive >> text;
        EXPECT_TRUE(text == stored) << size;
        EXPECT_EQ(archive.GetPosition(), file.GetLength());
    }
}

TEST(Archive, CorruptDataRaisesTheNamedError) {
    struct Row {
        const char* name;
        std::string bytes;
        void (*read)(CArchive&);
        const char* message; // null: the data end too early
    };
    const auto string = [](CArchive& a) {
        CString text;
        a >> text;
    };
    const auto object = [](CArchive& a) {
        while (true) {
            a.ReadObject();
        }
    };
    const auto count = [](CArchive& a) { a.ReadCount(); };
    constexpr const char* corrupted = "memory.bin is corrupted.";
    const Row rows[] = {{"nothing", "", count, nullptr},
                        {"count cut", Bytes({0xFF, 1, 2, 3}), count, nullptr},
                        {"string cut", Bytes({3, 'a', 'b'}), string, nullptr},
                        {"huge string", Bytes({0xFF, 0, 0, 0, 0x7F, 'a'}), string, nullptr},
                        {"negative length", Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0xFF}), string, corrupted},
                        {"unnamed class", Bytes({0}), object, corrupted},
                        {"class out of order", Bytes({3, 5}) + "Point", object, corrupted},
                        {"class named twice", Bytes({1, 0, 1, 0}), object, corrupted},
                        {"negative class", Bytes({0xFF, 0xFE, 0xFF, 0xFF, 0xFF}), object, corrupted},
                        {"negative first class", Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0xFF}), object, corrupted},
                        {"unknown class", Bytes({1, 1, 'X'}), object, "Invalid version of memory.bin."}};
    for (const Row& row : rows) {
        CMemoryFile file(row.bytes);
        CArchive archive(&file, AD_Load);
        if (row.message) {
            const auto error = Raised<CCheckException>([&] { row.read(archive); });
            EXPECT_EQ(error ? Readable(error->GetMessageText().View()) : "nothing", row.message) << row.name;
        } else {
            const auto error = Raised<CFileException>([&] { row.read(archive); });
            EXPECT_EQ(error ? error->cause : FC_None, FC_EndOfFile) << row.name;
            EXPECT_TRUE(!error || error->fileName == u"memory.bin") << row.name;
        }
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
    ExpectRefused({[&] { store.Read(&byte, 1); }, [&] { load.Write(&byte, 0); }, [&] { load.Read(&byte, -1); },
                   [&] { store.Write(&byte, -1); }, [&] { closed.Write(&byte, 0); }, [&] { closed.Close(); },
                   [&] { closed.GetPosition(); }, [&] { store.Attach(&file, AD_Store); },
                   [] { const CArchive nothing(nullptr, AD_Store); },
                   [&] { CArchive(&file, AD_Store).WriteClassName(u"\x00E4"); }, [&] { store.WriteObject(&plain); },
                   [&] { plain.Serialize(store); }, [] { CreateObject(u"Nothing"); }});
}

TEST(Archive, ClassesWithoutAFactoryLookForTheirModule) {
    const char16_t* const loaded = Platform::GetModuleHandle(u"kernel32.dll") ? u"kernel32.dll" : u"libc.so.6";
    RegisterClassModule(u"Missing", u"no such library.dll");
    RegisterClassModule(u"Forgotten", loaded);
    EXPECT_TRUE(IsClassKnown(u"Missing"));
    EXPECT_EQ(Raised<CCheckException>([] { CreateObject(u"Unheard"); })->GetMessageText().Left(38),
              u"ERR_NO_MODULE_LOADED_FOR_CLASS Unheard");
    const auto missing = Raised<CCheckException>([] { CreateObject(u"Missing"); });
    ASSERT_TRUE(missing);
    EXPECT_EQ(missing->GetMessageText().Left(36), u"Cannot load DLL no such library.dll.");
    EXPECT_EQ(missing->param1, GetLastErrorText(2));
    EXPECT_TRUE(Raised<CInternalError>([] { CreateObject(u"Forgotten"); }));
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
        const auto bufferSize =
            static_cast<std::int32_t>(std::initializer_list<int>{0, 1, 7, 4096, 9000}.begin()[random() % 5]);
        CMemoryFile file;
        std::string model;
        CArchive store(&file, AD_Store, bufferSize);
        CArchive load(&file, AD_Load, bufferSize);
        const auto pieceSize = [&random] {
            return static_cast<std::int32_t>(random() % (random() % 8 == 0 ? 10000 : 40));
        };
        for (int step = 0; step < 300; ++step) {
            std::string piece(static_cast<std::size_t>(pieceSize()), static_cast<char>(random()));
            store.Write(piece.data(), static_cast<std::int32_t>(piece.size()));
            model += piece;
            if (random() % 16 == 0) {
                store.Flush();
                ASSERT_EQ(file.bytes, model);
            }
            ASSERT_EQ(store.GetPosition(), static_cast<std::int64_t>(model.size()));
        }
        store.Close();
        ASSERT_EQ(file.bytes, model);
        file.position = 0;
        for (std::size_t at = 0; at < model.size();) {
            std::string piece(std::min(static_cast<std::size_t>(pieceSize()), model.size() - at), '\0');
            load.Read(piece.data(), static_cast<std::int32_t>(piece.size()));
            ASSERT_EQ(piece, std::string_view(model).substr(at, piece.size()));
            at += piece.size();
            ASSERT_EQ(load.GetPosition(), static_cast<std::int64_t>(at));
            if (random() % 16 == 0) {
                load.Flush();
                ASSERT_EQ(file.position, static_cast<std::int64_t>(at));
            }
        }
    }
}
