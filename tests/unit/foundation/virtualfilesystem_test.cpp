#include "foundation/inc/virtualfilesystem.h"

#include "foundation/inc/file.h"
#include "foundation/inc/filesystem.h"
#include "platform/inc/faults.h"
#include "platform/inc/fileattributes.h"
#include "platform/inc/files.h"
#include "platform/inc/mappings.h"
#include "tests/support/folder.h"
#include "tests/support/recordinghandler.h"
#include <atomic>
#include <cstdlib>
#include <vector>

using namespace Tsx;

namespace {

constexpr std::uint32_t ReadMode = OM_Read | OM_ShareDenyWrite;
constexpr std::uint32_t WriteMode = OM_Write | OM_ShareExclusive | OM_Create;

CVirtualFileSystem& System() {
    return dynamic_cast<CVirtualFileSystem&>(FileSystem::GetFileSystem(CVirtualFileSystem::GetRootName()));
}

CUnicodeString Path(const char16_t* name) {
    return CVirtualFileSystem::GetRootName() + name;
}

void Write(const CUnicodeString& path, const std::string& content = "x") {
    CFile file;
    file.Open(path, WriteMode);
    file.Write(content.data(), static_cast<std::int32_t>(content.size()));
}

std::string Content(const CUnicodeString& path) {
    if (!System().CheckFile(path, FA_Exists)) {
        return "(missing)";
    }
    CFile file;
    file.Open(path, OM_Read | OM_ShareDenyNone);
    std::string content(static_cast<std::size_t>(file.GetLength32()), '\0');
    file.Read(content.data(), file.GetLength32());
    return content;
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

TEST_F(VirtualFileSystem, OpensByDisposition) {
    struct Row {
        const char* name;
        const char16_t* file;
        std::uint32_t mode;
        std::uint32_t attributes;
        std::uint32_t code;
        const char* content; // behind it
        std::uint32_t attributesAfter;
    };
    constexpr std::uint32_t write = OM_Write | OM_ShareDenyNone;
    constexpr Row rows[] = {{"existing, missing", u"no", write, 128, 2, "(missing)", 0},
                            {"existing", u"old", write, 128, 0, "old", 160},
                            {"new, there", u"old", write | OM_CreateNew, 128, 5, "old", 160},
                            {"new", u"d\\e\\new", write | OM_CreateNew, 128, 0, "", 160},
                            {"always keeping, made", u"kept", write | OM_Create | OM_NoTruncate, 128, 0, "", 128},
                            {"always keeping, there", u"OLD", write | OM_Create | OM_NoTruncate, 128, 0, "old", 160},
                            {"always emptying", u"Old", write | OM_Create, 2, 0, "", 34},
                            {"stays hidden", u"old", write | OM_Create, 128, 0, "", 162},
                            {"read-only for its own maker", u"r", write | OM_Create, 1, 32, "", 33}};
    Write(Path(u"old"), "old");
    for (const Row& row : rows) {
        EXPECT_EQ(Code([&] { CFile().Open(Path(row.file), row.mode, row.attributes); }), row.code) << row.name;
        EXPECT_EQ(Content(Path(row.file)), row.content) << row.name;
        EXPECT_TRUE(row.attributesAfter == 0 || System().GetAttributes(Path(row.file)) == row.attributesAfter)
            << row.name;
    }
    EXPECT_EQ(Listing(u""), u"kept old r d\\ ") << "in the order of the table, by the latest spelling";
    EXPECT_TRUE(Raised<CInternalError>(
        [] { System().OpenFile(Path(u"x"), Platform::GenericRead, 3, nullptr, 5, 128, nullptr, 0, nullptr); }));
    CFile open;
    open.Open(Path(u"old"), ReadMode);
    EXPECT_EQ(Code([] { Write(Path(u"old")); }), 32U) << "not emptied under a reader";
}

TEST_F(VirtualFileSystem, SharesOneWay) {
    struct Row {
        const char* name;
        std::uint32_t first;
        std::uint32_t second;
        std::uint32_t code;
    };
    constexpr Row rows[] = {
        {"readers that deny writing", OM_Read | OM_ShareDenyWrite, OM_Read | OM_ShareDenyWrite, 0},
        {"a writer beside one", OM_Read | OM_ShareDenyWrite, OM_Write | OM_ShareDenyNone, 32},
        {"a reader beside one that denies reading", OM_Read | OM_ShareDenyRead, OM_Read | OM_ShareDenyNone, 32},
        {"exclusive beside a reader who shares", OM_Read | OM_ShareDenyNone, OM_ReadWrite | OM_ShareExclusive, 0},
        {"beside an exclusive one", OM_Read | OM_ShareExclusive, OM_Read | OM_ShareDenyNone, 32}};
    Write(Path(u"f"));
    for (const Row& row : rows) {
        CFile first;
        CFile second;
        first.Open(Path(u"f"), row.first);
        EXPECT_EQ(System().CheckFile(Path(u"F"), row.second), row.code == 0) << row.name;
        EXPECT_EQ(Code([&] { second.Open(Path(u"f"), row.second); }), row.code) << row.name;
        EXPECT_EQ(Code([] { System().DeleteFile(Path(u"f")); }), 32U) << row.name;
        EXPECT_FALSE(System().TryDeleteFile(Path(u"f"))) << row.name;
    }
    System().SetAttributes(Path(u"f"), Platform::FileAttributeReadOnly);
    EXPECT_EQ(Code([] { CFile().Open(Path(u"f"), OM_Write | OM_ShareDenyNone); }), 32U);
    CFile reader;
    CFile writer;
    reader.Open(Path(u"f"), OM_Read | OM_ShareDenyNone);
    EXPECT_EQ(Code([&] { writer.Open(Path(u"f"), OM_Write | OM_ShareDenyNone); }), 0U) << "read-only no more";
    reader.Close();
    writer.Close();
    EXPECT_TRUE(System().CheckFile(Path(u"f"), OM_Read | OM_ShareExclusive));
    EXPECT_FALSE(System().CheckFile(Path(u"none"), OM_Read | OM_ShareExclusive));
    EXPECT_TRUE(System().TryDeleteFile(Path(u"f"))) << "a question leaves no handle behind";
    EXPECT_FALSE(System().CheckFile(u"", FA_Exists));
    EXPECT_TRUE(Raised<CInternalError>([] { System().CheckFile(Path(u"f"), OM_Read); })) << "no sharing";
}

TEST_F(VirtualFileSystem, DirectoriesAndTheirStatus) {
    Write(Path(u"a\\b/c\\f.txt"));
    EXPECT_TRUE(System().DirectoryExists(Path(u"A\\B\\")));
    EXPECT_FALSE(System().CheckFile(Path(u"a\\b"), FA_Exists)) << "is no file";
    EXPECT_FALSE(System().DirectoryExists(Path(u"a\\b\\c\\f.txt")));
    System().CreateDirectory(Path(u"a\\b\\d"), true);
    System().CreateDirectory(Path(u"a\\b\\d"), true);
    EXPECT_EQ(Code([] { System().RemoveDirectory(Path(u"a\\b")); }), 32U);
    EXPECT_EQ(Code([] { System().RemoveDirectory(Path(u"a\\none")); }), 0U);
    System().RemoveDirectory(Path(u"a\\b\\d\\"));
    EXPECT_EQ(Listing(u"a\\b"), u"c\\ ");
    CArray<CFileStatus> found;
    found.SetSize(1);
    System().FindFiles(Path(u"none"), found, u"*");
    System().FindFiles(Path(u"a\\b\\c"), found, u"*.*");
    ASSERT_EQ(found.Size(), 2) << "behind what was there";
    EXPECT_EQ(found[1].Name, u"f.txt");
    EXPECT_EQ(found[1].Size, 1);
    EXPECT_GT(found[1].CreationTime, 130'000'000'000'000'000) << "after 2012";

    CFileStatus status = found[1];
    status.Attributes = 3;
    status.LastWriteTime = 5;
    status.Size = 77;
    System().SetStatus(Path(u"a\\b\\c\\F.TXT"), status);
    System().GetStatus(Path(u"a\\b\\c\\f.txt"), status);
    EXPECT_EQ(status.Attributes, 3U);
    EXPECT_EQ(status.LastWriteTime, 5);
    EXPECT_EQ(status.LastAccessTime, found[1].LastAccessTime);
    EXPECT_EQ(status.Size, 1) << "stays";
    System().GetStatus(Path(u"a\\b"), status);
    EXPECT_EQ(status.FullName, Path(u"a\\b"));
    EXPECT_EQ(status.Attributes, 16U);
    System().SetAttributes(Path(u"a\\b\\c\\f.txt"), 128 | 3);
    EXPECT_EQ(System().GetAttributes(Path(u"a\\b\\c\\f.txt")), 3U);
    for (const auto& missing : {std::function<void()>([&] { System().GetStatus(Path(u"a\\x"), status); }),
                                {[&] { System().SetStatus(Path(u"a\\x"), status); }},
                                {[] { System().GetAttributes(Path(u"a\\x")); }},
                                {[] { System().SetAttributes(Path(u"a\\x"), 0); }},
                                {[] { System().DeleteFile(Path(u"a")); }}}) {
        EXPECT_EQ(Code(missing), 2U);
    }
    EXPECT_GT(System().GetFreeSpace(Path(u"")), 0);
    System().DeleteTree(CVirtualFileSystem::GetRootName(), false);
    EXPECT_TRUE(System().DirectoryExists(CVirtualFileSystem::GetRootName())) << "the root stays";
    EXPECT_EQ(Listing(u""), u"") << "and nothing else, read-only files neither";
}

TEST_F(VirtualFileSystem, OtherPathsAreInternalErrors) {
    Write(Path(u"f"));
    ExpectRefused({[] { System().DirectoryExists(u"C:\\x"); }, [] { System().DirectoryExists(u""); },
                   [] { System().CheckFile(u"C:\\x", FA_Exists); }, [] { System().TryDeleteFile(u""); },
                   [] { System().RemoveDirectory(u"C:\\"); }, [] { System().MoveFile(u"C:\\x", u"C:\\y"); },
                   [] { System().CopyFile(u"C:\\x", u"C:\\y"); }, [] { System().CloseFile(nullptr, true); }});
    EXPECT_EQ(Listing(u""), u"f ");
}

TEST_F(VirtualFileSystem, MatchesNames) {
    constexpr const char16_t* matching[][2] = {
        {u"a", u"*.*"},    {u"a.txt", u"*.*"}, {u"abc", u"*"},       {u"abc.txt", u"a?c.t*"}, {u"abcd", u"abc*"},
        {u"axyz", u"a*b"}, {u".x", u".x"},     {u"a.txt", u"a.tx?"}, {u"d\\e.f", u"x\\e.f"},  {u"a.b.c", u"a.b.?"}};
    for (const auto& [name, pattern] : matching) {
        EXPECT_TRUE(CVirtualFileSystem::MatchName(Path(name), pattern)) << Readable(name) << ' ' << Readable(pattern);
    }
    constexpr const char16_t* others[][2] = {
        {u"a.txt", u"*"}, {u"a", u"?*.*"},   {u"Abc.txt", u"a?c.t*"}, {u"abc.", u"a?c.t*"}, {u"abc", u"abc*"},
        {u"ab", u"abc*"}, {u"abcd", u"abc"}, {u"ab", u"a*b"},         {u"a.tx", u"a.tx?"},  {u"a", u""}};
    for (const auto& [name, pattern] : others) {
        EXPECT_FALSE(CVirtualFileSystem::MatchName(Path(name), pattern)) << Readable(name) << ' ' << Readable(pattern);
    }
    for (const char16_t* name : {u"abc.txt", u"ab.txt", u"d\\x"}) {
        Write(Path(name));
    }
    EXPECT_EQ(Listing(u"", u"*"), u"ab.txt abc.txt d\\ ") << "the lone star needs no match";
    EXPECT_EQ(Listing(u"", u"?*"), u"");
}

TEST_F(VirtualFileSystem, FilesOverMappingsMadeElsewhere) {
    CMemoryMapping made(1, 100);
    std::memcpy(made.MapView(Platform::FileMapWrite, 0, 0), "elsewhere", 10);
    const auto open = [&](std::uint32_t access, std::uint32_t disposition = Platform::OpenAlways) {
        return System().OpenFile(Path(u"m"), access, 3, nullptr, disposition, 128, made.Handle, 100, nullptr);
    };
    for (const std::uint32_t disposition : {Platform::CreateNew, Platform::CreateAlways, Platform::OpenAlways}) {
        EXPECT_EQ(Code([&] { open(Platform::GenericWrite, disposition); }), 32U) << disposition;
        EXPECT_EQ(Content(Path(u"m")), "(missing)") << disposition;
    }
    CBaseFile* file = nullptr; // failures leave the mapping with its maker, who offers it again
    for (std::int32_t nth = 1; !file; ++nth) {
        Platform::ArmFault("allocation", nth, 8, Platform::FaultMode::FromThenOn);
        Raised<CMemoryException>([&] { file = open(Platform::GenericRead, Platform::CreateNew); });
        Platform::DisarmFaults();
        EXPECT_TRUE(file || !System().CheckFile(Path(u"m"), FA_Exists)) << nth;
    }
    made.Handle = nullptr; // the file's now
    char text[200] = {};
    EXPECT_EQ(file->Read(text, 200), 100);
    EXPECT_STREQ(text, "elsewhere");
    EXPECT_EQ(System().GetAttributes(Path(u"m")), 161U);
    file->SetLength(0x10000);
    file->Seek(0, SeekFromStart);
    std::vector<char> more(0x10000);
    EXPECT_TRUE(Raised<CInternalError>([&] { file->Read(more.data(), 0x10000); })) << "the mapping ends before";
    System().CloseFile(file, false);
    EXPECT_EQ(Code([&] { open(Platform::GenericWrite); }), 32U);
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
    CFile first;
    CFile second;
    CStubbornFile stubborn;
    first.Open(Path(u"d\\a"), WriteMode);
    second.Open(Path(u"d\\c"), WriteMode);
    stubborn.Open(Path(u"b"), WriteMode);
    EXPECT_EQ(Code([] { System().ReleaseAll(); }), 112U) << "when the others are closed";
    EXPECT_FALSE(first.IsOpen());
    EXPECT_FALSE(second.IsOpen());
    EXPECT_TRUE(stubborn.IsOpen());
    EXPECT_EQ(Listing(u""), u"b d\\ ") << "nothing goes as long as a file is open";
    stubborn.stays = false;
    EXPECT_EQ(Code([] { System().ReleaseAll(); }), 112U);
    EXPECT_EQ(Listing(u""), u"");

    CBaseFile* ownerless =
        System().OpenFile(Path(u"x"), Platform::GenericRead, 3, nullptr, Platform::CreateNew, 128, nullptr, 0, nullptr);
    EXPECT_TRUE(Raised<CInternalError>([] { System().ReleaseAll(); })) << "nobody can close it";
    System().CloseFile(ownerless, true);

    Write(Path(u"d\\left.txt"));
    System().CreateDirectory(Path(u"d\\e"), false);
    System().SetAttributes(Path(u"d\\e"), 128); // looks like a file
    testing::internal::CaptureStderr();
    FileSystem::ShutdownFileSystems();
    const std::string traced = testing::internal::GetCapturedStderr();
    if (std::getenv("TESSARIX_DEBUG_OUTPUT")) {
        std::string expected;
        for (const char* name : {"x", "d", "d\\left.txt", "d\\e"}) {
            expected += R"(Undeleted object in virtual file sustem: \\Ostrel\Tessarix\VirtualFiles$\)";
            expected += std::string(name) + '\n';
        }
        EXPECT_EQ(traced, expected);
    }
}

TEST_F(VirtualFileSystem, CloseAndAbortAreCrossed) {
    CRecordingHandler handler;
    const CMessageHandlerScope scope(&handler);
    for (const bool abort : {true, false}) {
        CBaseFile* file = System().OpenFile(Path(u"f"), Platform::GenericWrite, 3, nullptr, Platform::CreateAlways, 128,
                                            nullptr, 0, nullptr);
        file->Write("x", 1);
        auto* opened = dynamic_cast<CVirtualFile*>(file);
        CVirtualView* view = opened->Views.GetFirst();
        view->Owner->Mapping->UnmapView(view->Data); // closing will not find it
        EXPECT_EQ(Raised<CInternalError>([&] { System().CloseFile(file, abort); }) != nullptr, abort);
        EXPECT_EQ(handler.texts.size(), abort ? 0U : 1U);
        EXPECT_TRUE(System().TryDeleteFile(Path(u"f"))) << "closed and forgotten all the same";
    }
}

TEST_F(VirtualFileSystem, MemoryThatEndsLeavesItInOrder) {
    SKIP_WITHOUT_FAULTS();
    Platform::ArmFault("GlobalMemoryStatusEx", 1, 1450, Platform::FaultMode::Once);
    const auto failure = Raised<CInternalError>([] { System().GetFreeSpace(Path(u"")); });
    EXPECT_EQ(failure ? failure->code : 0, 1450U);
    Write(Path(u"old"), "old");
    for (const auto& action : {std::function<void()>([] { CFile().Open(Path(u"p\\q\\new"), WriteMode); }),
                               {[] { CFile().Open(Path(u"old"), ReadMode); }},
                               {[] { System().CreateDirectory(Path(u"p\\q\\r"), false); }},
                               {[] { System().CopyFile(Path(u"s\\copy"), Path(u"old")); }},
                               {[] { Listing(u"", u"o*"); }}}) {
        const auto cleanUp = [](std::int32_t) {
            System().TryDeleteFile(Path(u"p\\q\\new"));
            System().TryDeleteFile(Path(u"s\\copy"));
        };
        FailEachCall("allocation", 8, Platform::FaultMode::Once, cleanUp, action, [](std::int32_t nth) {
            EXPECT_EQ(Content(Path(u"old")), "old") << nth;
            EXPECT_TRUE(System().CheckFile(Path(u"old"), OM_ReadWrite | OM_ShareExclusive)) << "no handle is left";
            const std::string copy = Content(Path(u"s\\copy"));
            EXPECT_TRUE(copy == "old" || copy == "(missing)") << nth;
        });
    }
}

TEST_F(VirtualFileSystem, NothingStaysInACallersHeap) {
    struct CCountingManager : IMemoryManager {
        int blocks = 0;
        void* Alloc(std::int32_t size) override {
            ++blocks;
            return RuntimeHeapManager.Alloc(size);
        }
        void Free(void* block) override {
            --blocks;
            RuntimeHeapManager.Free(block);
        }
    } manager;
    CBaseFile* file = nullptr;
    {
        const CMemoryManagerScope scope(&manager);
        Write(Path(u"d\\e\\f"), std::string(200'000, 'x'));
        file = System().OpenFile(Path(u"d\\e\\f"), Platform::GenericRead, 3, nullptr, Platform::OpenExisting, 0,
                                 nullptr, 0, nullptr);
        char byte = 0;
        file->Read(&byte, 1);
    }
    EXPECT_EQ(manager.blocks, 0) << "files outlive the thread that made them";
    System().CloseFile(file, true);
}

TEST_F(VirtualFileSystem, ManyThreads) {
    OnThreads(4, [](int thread) {
        const std::string content(70'000, static_cast<char>('a' + thread));
        for (int round = 0; round < 300; ++round) {
            const CUnicodeString own = Path(u"shared\\") + CUnicodeString::Format(u"%d %d", thread, round % 7);
            Write(own, content);
            EXPECT_TRUE(Content(own) == content);
            CFile().Open(Path(u"shared\\common"), OM_Read | OM_ShareDenyNone | OM_Create | OM_NoTruncate);
            Listing(u"shared");
            System().MoveFile(own + u".moved", own);
            EXPECT_FALSE(System().CheckFile(own, FA_Exists));
            System().DeleteFile(own + u".moved");
            System().TryDeleteFile(Path(u"shared\\common"));
        }
    });
}

TEST_F(VirtualFileSystem, OthersSeeACopyAndAMoveWhole) {
    Write(Path(u"moved\\a"), std::string(70'000, 'm'));
    Write(Path(u"source"), std::string(70'000, 's'));
    System().CopyFile(Path(u"copy"), Path(u"source"));
    std::atomic<bool> ended{false};
    OnThreads(2, [&](int thread) {
        for (int round = 0; thread == 0 && round < 2000; ++round) {
            System().MoveFile(Path(round % 2 == 0 ? u"moved\\b" : u"moved\\a"),
                              Path(round % 2 == 0 ? u"moved\\a" : u"moved\\b"));
            System().CopyFile(Path(u"copy"), Path(u"source"));
        }
        ended = ended || thread == 0;
        while (!ended) {
            EXPECT_EQ(Listing(u"moved").size(), 2U) << "one of the two names";
            EXPECT_TRUE(System().CheckFile(Path(u"copy"), OM_Read | OM_ShareDenyNone)) << "nobody is writing to it";
        }
    });
}

TEST_F(VirtualFileSystem, CopiesAndMovesAcrossTheBorder) {
    const CTestFolder folder;
    std::string content(150'000, 'c');
    content.replace(65'530, 10, "0123456789");
    struct Row {
        const char* name;
        bool fromVirtual;
        bool toVirtual;
        bool move;
    };
    for (const Row& row : {Row{"within", true, true, false}, Row{"out", true, false, false},
                           Row{"in", false, true, false}, Row{"move within", true, true, true},
                           Row{"move out", true, false, true}, Row{"move in", false, true, true}}) {
        const CUnicodeString source = row.fromVirtual ? Path(u"d\\source") : folder / u"source";
        const CUnicodeString target = row.toVirtual ? Path(u"e\\target") : folder / u"target";
        for (const char* before : {"", "an older content that is replaced"}) {
            Write(source, content);
            if (*before != '\0') {
                Write(target, before);
                FileSystem::GetFileSystem(target).SetAttributes(target, row.toVirtual ? 1 : 128); // of no account here
            }
            row.move ? System().MoveFile(target, source) : System().CopyFile(target, source);
            EXPECT_TRUE((row.toVirtual ? Content(target) : folder.Content(u"target")) == content) << row.name;
            const bool gone = !FileSystem::GetFileSystem(source).CheckFile(source, FA_Exists);
            EXPECT_EQ(gone, row.move) << row.name;
        }
        FileSystem::GetFileSystem(target).DeleteFile(target);
    }
    EXPECT_TRUE(Raised<CInternalError>([&] { System().CopyFile(folder / u"a", folder / u"b"); }));
    EXPECT_TRUE(Raised<CInternalError>([&] { System().MoveFile(folder / u"a", folder / u"b"); }));
    Write(Path(u"f"), "f");
    System().RenameFile(Path(u"f"), Path(u"g"));
    EXPECT_EQ(Code([] { System().MoveFileOnVolume(Path(u"g"), Path(u"G")); }), 32U) << "onto itself";
    EXPECT_EQ(Content(Path(u"g")), "f");
    EXPECT_EQ(Code([] { System().CopyFile(Path(u"h"), Path(u"f")); }), 2U);
    EXPECT_EQ(Content(Path(u"h")), "(missing)");
}

TEST_F(VirtualFileSystem, CopiesThatFailLoseNothing) {
    const CTestFolder folder;
    const std::string content(150'000, 'c');
    const CUnicodeString native = folder / u"native";
    const auto holdOpen = [](const CUnicodeString& path) {
        Write(path, "old");
        auto held = std::make_unique<CFile>();
        held->Open(path, OM_Read | OM_ShareExclusive);
        return held;
    };
    Write(Path(u"source"), content);
    {
        const auto held = holdOpen(native);
        EXPECT_EQ(Code([&] { System().MoveFile(native, Path(u"source")); }), 1005U) << "the target is open elsewhere";
        const auto virtualHeld = holdOpen(Path(u"held"));
        EXPECT_EQ(Code([&] { System().MoveFile(Path(u"held"), Path(u"source")); }), 32U);
    }
    EXPECT_EQ(folder.Content(u"native"), "old");
    EXPECT_EQ(Content(Path(u"held")), "old");
    EXPECT_EQ(Code([&] { System().MoveFile(folder / u"none\\f", Path(u"source")); }), 1003U);
    EXPECT_TRUE(Content(Path(u"source")) == content);
    if (!Platform::FaultsAvailable()) {
        return;
    }
    // The disk is full at the n-th call of any kind, once or from then on; or it takes all but says that it took less.
    using enum Platform::FaultMode;
    for (const auto& [function, mode] : {std::pair("*", Once),
                                         {"*", FromThenOn},
                                         {"WriteFile", FromThenOn},
                                         {"CloseHandle", Once},
                                         {"allocation", FromThenOn}}) {
        for (const bool out : {true, false}) {
            const CUnicodeString source = out ? Path(u"source") : native;
            const CUnicodeString target = out ? native : Path(u"target");
            const auto prepare = [&](std::int32_t) {
                FileSystem::GetFileSystem(target).TryDeleteFile(target);
                Write(source, content);
            };
            const auto move = [&] { System().MoveFile(target, source); };
            FailEachCall(function, 112, mode, prepare, move, [&, whole = mode == Once](std::int32_t nth) {
                const std::string left = out ? folder.Content(u"native") : Content(target);
                const std::string kept = out ? Content(source) : folder.Content(u"native");
                EXPECT_TRUE(left == content || kept == content) << function << ' ' << nth << (out ? " out" : " in");
                // Where every call fails the half file cannot be deleted either; one that could not be opened is empty.
                EXPECT_TRUE(left == content || left == "(missing)" || left.empty() || !whole)
                    << function << ' ' << nth << (out ? " out" : " in");
            });
        }
    }
    Write(Path(u"source"), "twelve bytes");
    Platform::ArmShortTransfers(5);
    System().CopyFile(native, Path(u"source"));
    Platform::DisarmFaults();
    EXPECT_EQ(folder.Content(u"native"), "twelve bytes");
}
