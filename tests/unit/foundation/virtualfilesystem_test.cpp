// Files in memory: the bodies, the open handles, the names, and copies from and to files of the system.
#include "foundation/inc/virtualfilesystem.h"

#include "foundation/inc/file.h"
#include "foundation/inc/filesystem.h"
#include "platform/inc/faults.h"
#include "platform/inc/files.h"
#include "platform/inc/mappings.h"
#include "tests/support/folder.h"
#include "tests/support/memoryfile.h"
#include "tests/support/recordinghandler.h"
#include "tests/support/virtualmodel.h"
#include <atomic>
#include <limits>
#include <random>
#include <tuple>

using namespace Tsx;

namespace {

constexpr std::uint32_t WriteMode = OM_Write | OM_ShareExclusive | OM_Create;
constexpr std::int64_t Most = std::numeric_limits<std::int64_t>::max();

CVirtualFileSystem& System() {
    return dynamic_cast<CVirtualFileSystem&>(FileSystem::GetFileSystem(CVirtualFileSystem::GetRootName()));
}

CUnicodeString Path(const char16_t* name) {
    return CVirtualFileSystem::GetRootName() + name;
}

/// A body and a handle on it.
struct SFile {
    explicit SFile(std::uint32_t attributes = 128, std::int64_t reserve = 0) : data(u"name", attributes, reserve) {}
    CVirtualFileData data;
    CVirtualFile file{Platform::GenericRead | Platform::GenericWrite, 3, &data};
};

void WriteAt(CBaseFile& file, std::int64_t position, const std::string& bytes) {
    file.Seek(position, SeekFromStart);
    file.Write(bytes.data(), static_cast<std::int32_t>(bytes.size()));
}

std::string ReadAt(CBaseFile& file, std::int64_t position, std::int32_t count) {
    file.Seek(position, SeekFromStart);
    std::string bytes(static_cast<std::size_t>(count), '?');
    bytes.resize(static_cast<std::size_t>(file.Read(bytes.data(), count)));
    return bytes;
}

void Write(const CUnicodeString& path, const std::string& content = "x") {
    CFile file;
    file.Open(path, WriteMode);
    WriteAt(file, 0, content);
}

std::string Content(const CUnicodeString& path) {
    if (!FileSystem::GetFileSystem(path).CheckFile(path, FA_Exists)) {
        return "(missing)";
    }
    CFile file;
    file.Open(path, OM_Read | OM_ShareDenyNone);
    return ReadAt(file, 0, file.GetLength32());
}

/// The code of the CFileException that an action raises, or its cause above 1000 if it has none; 0 for nothing.
std::uint32_t Code(const std::function<void()>& action) {
    const auto failure = Raised<CFileException>(action);
    return !failure ? 0 : failure->lastError != 0 ? failure->lastError : 1000 + failure->cause;
}

std::u16string Listing(const char16_t* directory, const char16_t* pattern = u"*") {
    CArray<CFileStatus> found;
    System().FindFiles(Path(directory), found, pattern);
    std::u16string names;
    for (const CFileStatus& status : found) {
        names += std::u16string(status.Name.View()) + (status.Attributes & 16 ? u"\\ " : u" ");
    }
    return names;
}

/// Each test begins and ends with an empty file system.
class VirtualFileSystem : public testing::Test {
protected:
    void TearDown() override {
        Platform::DisarmFaults();
        System().ReleaseAll();
        EXPECT_EQ(Listing(u""), u"");
    }
};

} // namespace

TEST(VirtualFile, TheRangeGrowsByItsRules) {
    // What is reserved, the positions that a byte each is written at, and the sizes of the mappings.
    using TRow = std::tuple<std::int64_t, std::vector<std::int64_t>, const char*>;
    for (const auto& [reserve, positions, sizes] :
         {TRow{1'000'000, {0, 1'048'576, 1'572'864}, "1048576 524288 786432 "}, // rounded up, then by half
          {100'000, {500'000}, "131072 393216 "},
          {0, {0, 131'072}, "65536 65536 65536 "}}) { // a jump of whole units ends short
        SFile made(128, reserve);
        for (const std::int64_t position : positions) {
            WriteAt(made.file, position, "x");
        }
        made.file.SetLength(0); // gives nothing back
        std::string found;
        for (const CVirtualMapping* mapping : made.data.Mappings) {
            found += std::to_string(mapping->Size) + ' ';
        }
        EXPECT_EQ(found, sizes);
    }
    SFile large(128, 0x1'0000'0003);
    WriteAt(large.file, 0x1'0000'0000, "far");
    EXPECT_EQ(ReadAt(large.file, 0, 3), std::string(3, '\0')) << "what is 4 GiB away is no start of the range";
    EXPECT_EQ(ReadAt(large.file, 0x1'0000'0000, 4), "far");
    const Platform::Handle mapping =
        Platform::CreateFileMapping(Platform::InvalidHandle(), nullptr, Platform::PageReadWrite, 0, 100, nullptr);
    CVirtualFileData huge(u"name", 128, mapping, Most / 4);
    Platform::MemoryStatus status;
    ASSERT_TRUE(Platform::GlobalMemoryStatusEx(status));
    const auto growth = huge.GetMapping(Most / 4)->Size;
    const auto allowed = static_cast<double>(status.availablePageFile) / 10;
    EXPECT_NEAR(static_cast<double>(growth) / allowed, 1, 0.5) << "no more than memory allows";
}

TEST(VirtualFile, EndsOfTheRangeAndMisuse) {
    SFile made;
    CVirtualFile& file = made.file;
    file.SetLength(8);
    for (const std::int64_t offset : {std::int64_t{-9}, std::numeric_limits<std::int64_t>::min(), Most}) {
        EXPECT_EQ(Code([&] { file.Seek(offset, SeekFromEnd); }), 1000U + FC_BadSeek) << offset;
        EXPECT_EQ(file.GetPosition(), 0) << offset;
    }
    file.Seek(Most, SeekFromStart);
    EXPECT_EQ(Code([&] { file.Write("x", 1); }), 112U) << "more than can be counted";
    EXPECT_EQ(file.GetLength(), 8);
    file.SetLength(Most);
    EXPECT_EQ(Code([&] { ReadAt(file, Most - 1, 1); }), 112U);
    CVirtualFile reader(Platform::GenericRead, 3, &made.data);
    EXPECT_EQ(Code([&] { reader.Write(nullptr, 0); }), 32U) << "also for nothing";
    SFile readOnly(1);
    CMemoryFile other;
    EXPECT_EQ(Code([&] { readOnly.file.Write("x", 1); }), 32U);
    EXPECT_EQ(Code([&] { readOnly.file.LoadFrom(other); }), 32U);
    file.Close();
    ExpectRefused({[&] { reader.SetLength(-1); }, [&] { file.SetLength(0); }, [&] { file.Write("closed", 6); }});
}

TEST(VirtualFile, HandlesOnTwoThreads) {
    for (std::int64_t round = 0; round < 60; ++round) { // over one mapping, or a range that grows
        CVirtualFileData data(u"name", 128, round % 2 * 200 * ViewSize);
        OnThreads(2, [&data](int thread) {
            CVirtualFile file(Platform::GenericRead | Platform::GenericWrite, 3, &data);
            for (std::int64_t i = 0; i < 300; ++i) { // more views than a handle keeps
                const std::int64_t position = (i % 100 * 2 + thread) * ViewSize;
                WriteAt(file, position, std::to_string(thread));
                ASSERT_EQ(ReadAt(file, position, 1), std::to_string(thread)) << position;
            }
        });
        EXPECT_TRUE(data.Mappings[0]->Mapping->Views.IsEmpty());
    }
}

TEST(VirtualFile, LoadsFromAnyFile) {
    struct CCutFile : CMemoryFile {
        using CMemoryFile::CMemoryFile;
        std::int64_t GetLength() const override { return 3; }
    };
    SFile made;
    CCutFile whole("abc");
    CCutFile cut("ab");
    whole.position = 1;
    made.file.LoadFrom(whole);
    EXPECT_EQ(ReadAt(made.file, 0, 9) + std::to_string(whole.position), "abc1");
    EXPECT_EQ(Code([&] { made.file.LoadFrom(cut); }), 1000U + FC_EndOfFile) << "instead of waiting for ever";
}

TEST(VirtualModel, RandomOperationsGiveTheSame) {
    std::mt19937 random(1);
    CVirtualModel model([&](std::uint32_t bound) { return static_cast<std::uint32_t>(random() % bound); });
    for (int step = 0; step < 36'000; ++step) {
        std::string done;
        ASSERT_EQ(model.Step(done), "") << "step " << step << ", " << done;
    }
    EXPECT_EQ(model.CompareContents(), "");
}

TEST_F(VirtualFileSystem, OpensByDisposition) {
    constexpr std::uint32_t write = OM_Write | OM_ShareDenyNone;
    // The name, mode and attributes of an opening; its code, and the file's content and attributes behind it.
    Write(Path(u"old"), "old");
    for (const auto& [name, file, mode, attributes, expected] :
         {std::tuple("existing, missing", u"no", write, 128U, "2 (missing) 0"),
          {"new, there", u"old", write | OM_CreateNew, 128, "5 old 160"},
          {"new", u"d\\e\\new", write | OM_CreateNew, 128, "0  160"},
          {"always keeping, made", u"kept", write | OM_Create | OM_NoTruncate, 128, "0  128"},
          {"always keeping, there", u"OLD", write | OM_Create | OM_NoTruncate, 128, "0 old 160"},
          {"always emptying", u"Old", write | OM_Create, 2, "0  34"},
          {"read-only for its own maker", u"r", write | OM_Create, 1, "32  33"}}) {
        const CUnicodeString path = Path(file);
        const std::uint32_t code = Code([&, openMode = mode, own = attributes] { CFile().Open(path, openMode, own); });
        const std::uint32_t behind = System().CheckFile(path, FA_Exists) ? System().GetAttributes(path) : 0;
        EXPECT_EQ(std::to_string(code) + ' ' + Content(path) + ' ' + std::to_string(behind), expected) << name;
    }
    EXPECT_EQ(Listing(u""), u"kept Old r d\\ ") << "in the order of the table, by the latest spelling";
}

TEST_F(VirtualFileSystem, SharesOneWay) {
    const CUnicodeString path = Path(u"f");
    Write(path);
    // What the later one shares is not asked, and a read-only file refuses writers only while nobody has it open.
    for (const auto& [held, mode, code] : {std::tuple(OM_Read | OM_ShareDenyWrite, OM_Write | OM_ShareDenyNone, 32U),
                                           {OM_Read | OM_ShareDenyRead, OM_Read | OM_ShareDenyNone, 32U},
                                           {OM_Read | OM_ShareDenyNone, OM_ReadWrite | OM_ShareExclusive, 0U}}) {
        CFile first;
        first.Open(path, held);
        System().SetAttributes(path, 1);
        EXPECT_EQ(System().CheckFile(Path(u"F"), mode), code == 0) << held;
        EXPECT_EQ(Code([&, mode = mode] { CFile().Open(path, mode); }), code) << held;
        EXPECT_EQ(Code([&] { System().DeleteFile(path); }), 32U) << held;
        EXPECT_EQ(Code([&] { Write(path); }), 32U) << "not emptied either";
        EXPECT_FALSE(System().TryDeleteFile(path));
    }
    EXPECT_EQ(Code([&] { CFile().Open(path, OM_Write | OM_ShareDenyNone); }), 32U);
    EXPECT_TRUE(System().CheckFile(path, OM_Read | OM_ShareExclusive));
    EXPECT_TRUE(System().TryDeleteFile(path)) << "a question leaves no handle behind";
    EXPECT_FALSE(System().CheckFile(path, OM_Read | OM_ShareExclusive));
}

TEST_F(VirtualFileSystem, DirectoriesAndTheirStatus) {
    Write(Path(u"a\\b/c\\f.txt"));
    EXPECT_TRUE(System().DirectoryExists(Path(u"A\\B\\")) && !System().DirectoryExists(Path(u"a\\b\\c\\f.txt")));
    System().CreateDirectory(Path(u"a\\b\\d"), true);
    System().CreateDirectory(Path(u"a\\b\\d"), true);
    EXPECT_EQ(Code([] { System().RemoveDirectory(Path(u"a\\b")); }), 32U);
    System().RemoveDirectory(Path(u"a\\none"));
    System().RemoveDirectory(Path(u"a\\b\\d\\"));
    EXPECT_EQ(Listing(u"a\\b") + Listing(u"none"), u"c\\ ");

    const auto told = [](const char16_t* name) {
        CFileStatus s;
        System().GetStatus(Path(name), s);
        return CUnicodeString::Format(u"%s %s %u %d %d %d %d", s.FullName, s.Name, s.Attributes, s.Size, s.CreationTime,
                                      s.LastWriteTime, s.LastAccessTime);
    };
    CFileStatus status;
    System().GetStatus(Path(u"a\\b\\c\\f.txt"), status);
    EXPECT_GT(status.CreationTime, 130'000'000'000'000'000) << "after 2012";
    std::tie(status.CreationTime, status.LastWriteTime, status.LastAccessTime) = std::tuple(4, 5, 6);
    std::tie(status.Attributes, status.Size) = std::tuple(3, 77);
    System().SetStatus(Path(u"a\\b\\c\\F.TXT"), status);
    System().SetStatus(Path(u"a\\b"), status);
    EXPECT_EQ(told(u"a\\b\\c\\f.txt"), Path(u"a\\b\\c\\f.txt f.txt 3 1 4 5 6")) << "the size stays";
    EXPECT_EQ(told(u"a\\b"), Path(u"a\\b b 3 0 4 5 6"));
    System().SetAttributes(Path(u"a\\b"), 128 | 16);
    EXPECT_EQ(System().GetAttributes(Path(u"a\\b")), 16U);
    EXPECT_EQ(Code([&] { System().GetStatus(Path(u"a\\x"), status); }), 2U);
    EXPECT_EQ(Code([] { System().DeleteFile(Path(u"a")); }), 2U);
    EXPECT_GT(System().GetFreeSpace(Path(u"")), 0);
}

TEST_F(VirtualFileSystem, MatchesNames) {
    for (const char16_t* name : {u"ab", u"abc", u"abcd", u"a.b.c", u"ab.txt", u"abc.txt", u"Abd.txt", u"d.x\\f"}) {
        Write(Path(name));
    }
    EXPECT_EQ(Listing(u""), u"a.b.c ab.txt ab abc.txt Abd.txt abc abcd d.x\\ ") << "all, as they lie in the table";
    constexpr std::pair<const char16_t*, const char16_t*> rows[] = {
        {u"abc*", u"abcd "},        {u"a*b", u"abc abcd "}, {u"a?c.t*", u"abc.txt "},
        {u"x\\ab.tx?", u"ab.txt "}, {u"a.b.?", u"a.b.c "},  {u"", u""}};
    for (const auto& [pattern, matching] : rows) {
        EXPECT_EQ(Listing(u"", pattern), matching) << Readable(pattern);
    }
}

TEST_F(VirtualFileSystem, FilesOverMappingsMadeElsewhere) {
    CMemoryMapping made(1, 100);
    const auto open = [&](std::uint32_t access, std::uint32_t disposition) {
        return System().OpenFile(Path(u"f"), access, 3, nullptr, disposition, 128, made.Handle, 100, nullptr);
    };
    std::memcpy(made.MapView(Platform::FileMapWrite, 0, 0), "elsewhere", 10);
    EXPECT_EQ(Code([&] { open(Platform::GenericWrite, Platform::CreateNew); }), 32U);
    CBaseFile* file = nullptr; // failures leave the mapping with its maker, who offers it again
    for (std::int32_t nth = 1; !file; ++nth) {
        EXPECT_EQ(Listing(u""), u"") << nth;
        Platform::ArmFault("allocation", nth, 8, Platform::FaultMode::FromThenOn);
        Raised<CMemoryException>([&] { file = open(Platform::GenericRead, Platform::CreateNew); });
        Platform::DisarmFaults();
    }
    made.Handle = nullptr; // the file's now
    EXPECT_EQ(ReadAt(*file, 0, 200), "elsewhere" + std::string(91, '\0'));
    EXPECT_EQ(System().GetAttributes(Path(u"f")), 161U);
    file->SetLength(0x10000);
    EXPECT_TRUE(Raised<CInternalError>([&] { ReadAt(*file, 0, 0x10000); })) << "the mapping ends before";
    System().CloseFile(file, false);
    EXPECT_EQ(Code([&] { open(Platform::GenericWrite, Platform::OpenAlways); }), 32U);
}

TEST_F(VirtualFileSystem, TheSweepClosesAndDeletes) {
    struct CStubbornFile : CFile {
        bool stays = true;
        void Close() override {
            if (!stays) {
                CFile::Close();
            }
            GenerateFileException(112, u"stubborn");
        }
    };
    CFile other;
    CStubbornFile stubborn;
    other.Open(Path(u"d\\a"), WriteMode);
    stubborn.Open(Path(u"b"), WriteMode);
    EXPECT_EQ(Code([] { System().ReleaseAll(); }), 112U) << "when the others are closed";
    EXPECT_TRUE(!other.IsOpen() && stubborn.IsOpen());
    EXPECT_EQ(Listing(u""), u"b d\\ ") << "nothing goes as long as a file is open";
    stubborn.stays = false;
    EXPECT_EQ(Code([] { System().ReleaseAll(); }), 112U);
    EXPECT_EQ(Listing(u""), u"");
    Write(Path(u"d\\e\\left.txt"));
    System().SetAttributes(Path(u"d\\e"), 128); // looks like a file
    FileSystem::ShutdownFileSystems();
    EXPECT_FALSE(System().DirectoryExists(Path(u"d")) || System().DirectoryExists(Path(u"d\\e")));
}

TEST_F(VirtualFileSystem, OtherThreadsSeeEachOperationWhole) {
    Write(Path(u"moved\\a"), std::string(70'000, 'm'));
    Write(Path(u"source"), std::string(70'000, 's'));
    System().CopyFile(Path(u"copy"), Path(u"source"));
    std::atomic<bool> ended{false};
    OnThreads(3, [&](int thread) {
        for (int round = 0; thread == 0 && round < 250; ++round) {
            System().MoveFile(Path(u"moved\\b"), Path(u"moved\\a"));
            System().CopyFile(Path(u"copy"), Path(u"source"));
            System().MoveFile(Path(u"moved\\a"), Path(u"moved\\b"));
        }
        ended = ended || thread == 0;
        const CUnicodeString own = Path(u"own ") + CUnicodeString::FromInt(thread);
        while (!ended) {
            EXPECT_EQ(Listing(u"moved").size(), 2U) << "one of the two names";
            EXPECT_TRUE(System().CheckFile(Path(u"copy"), OM_Read | OM_ShareDenyNone)) << "nobody is writing to it";
            Write(own, "own");
            EXPECT_EQ(Content(own), "own");
            System().DeleteFile(own);
        }
    });
}

TEST_F(VirtualFileSystem, CopiesAndMovesLoseNothing) {
    const CTestFolder folder;
    const CUnicodeString native = folder / u"native";
    std::string content(150'000, 'c');
    content.replace(65'530, 10, "0123456789");
    Write(Path(u"first"), content);
    for (const auto& [target, code] : {std::pair(folder / u"held", 1005U), {Path(u"held"), 32U}}) {
        Write(target, "old");
        CFile held;
        held.Open(target, OM_Read | OM_ShareExclusive);
        EXPECT_EQ(Code([&, path = target] { System().MoveFile(path, Path(u"first")); }), code);
        held.Close();
        EXPECT_EQ(Content(target), "old");
    }
    EXPECT_EQ(Code([&] { System().MoveFile(folder / u"none\\f", Path(u"first")); }), 1003U);
    EXPECT_EQ(Code([] { System().CopyFile(Path(u"h"), Path(u"none")); }), 2U);
    EXPECT_EQ(Code([] { System().MoveFileOnVolume(Path(u"first"), Path(u"FIRST")); }), 32U) << "onto itself";
    System().RenameFile(Path(u"first"), Path(u"g"));
    EXPECT_TRUE(Content(Path(u"g")) == content && Content(Path(u"h")) == "(missing)");
    // The disk is full at the n-th call of any kind, once or from then on; or it takes all but says that it took less.
    using enum Platform::FaultMode;
    for (const auto& [function, mode] :
         {std::pair("*", Once), {"*", FromThenOn}, {"WriteFile", FromThenOn}, {"allocation", FromThenOn}}) {
        for (const auto& [source, target, attributes] : {std::tuple(Path(u"source"), native, 128U),
                                                         {native, Path(u"target"), 1U},
                                                         {Path(u"source"), Path(u"new\\target"), 1U}}) {
            const auto prepare = [&, from = source, to = target, own = attributes](std::int32_t) {
                Write(from, content);
                Write(to, "old");
                FileSystem::GetFileSystem(to).SetAttributes(to, own); // read-only is of no account here
            };
            const auto move = [from = source, to = target] { System().MoveFile(to, from); };
            const auto check = [&, from = source, to = target, once = mode == Once](std::int32_t nth) {
                const std::string left = Content(to);
                EXPECT_TRUE(left == content || Content(from) == content) << nth << Readable(to.View());
                // Where every call fails the half file cannot be deleted either; one that could not be opened is empty.
                EXPECT_TRUE(left == content || left == "(missing)" || left == "old" || left.empty() || !once) << nth;
            };
            FailEachCall(function, 112, mode, prepare, move, check);
            EXPECT_TRUE(Content(target) == content && Content(source) == "(missing)") << Readable(target.View());
        }
    }
    for (const auto& [source, target] : {std::pair(Path(u"source"), native), {native, Path(u"back")}}) {
        Write(source, "twelve bytes");
        Platform::ArmShortTransfers(5);
        System().CopyFile(target, source);
        Platform::DisarmFaults();
        EXPECT_EQ(Content(target) + Content(source), "twelve bytestwelve bytes");
    }
}
