#include "foundation/inc/virtualfilesystem.h"

#include "foundation/inc/file.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/threadobject.h"
#include "platform/inc/faults.h"
#include "platform/inc/fileattributes.h"
#include "platform/inc/files.h"
#include "platform/inc/mappings.h"
#include "tests/support/recordinghandler.h"
#include "tests/support/text.h"
#include "tests/support/virtualfiles.h"
#include <atomic>
#include <cstdlib>
#include <thread>
#include <vector>

using namespace Tsx;

namespace {

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
    const std::function<void()> calls[] = {
        [] { System().DirectoryExists(u"C:\\x"); },      [] { System().DirectoryExists(u""); },
        [] { System().CheckFile(u"C:\\x", FA_Exists); }, [] { System().TryDeleteFile(u""); },
        [] { System().RemoveDirectory(u"C:\\"); },       [] { System().MoveFile(u"C:\\x", u"C:\\y"); },
        [] { System().CopyFile(u"C:\\x", u"C:\\y"); },   [] { System().CloseFile(nullptr, true); }};
    Write(Path(u"f"));
    for (const auto& call : calls) {
        EXPECT_TRUE(Raised<CInternalError>(call)) << "call " << &call - calls;
        EXPECT_EQ(ShownInstead(call), 1U) << "call " << &call - calls;
    }
    EXPECT_EQ(Listing(u""), u"f ");
}

TEST_F(VirtualFileSystem, MatchesNames) {
    struct Row {
        const char16_t* name;
        const char16_t* pattern;
        bool matches;
    };
    constexpr Row rows[] = {{u"a", u"*.*", true},
                            {u"a.txt", u"*.*", true},
                            {u"abc", u"*", true},
                            {u"a.txt", u"*", false},
                            {u"a", u"?*.*", false},
                            {u"abc.txt", u"a?c.t*", true},
                            {u"Abc.txt", u"a?c.t*", false},
                            {u"abc.", u"a?c.t*", false},
                            {u"abcd", u"abc*", true},
                            {u"abc", u"abc*", false},
                            {u"ab", u"abc*", false},
                            {u"abcd", u"abc", false},
                            {u"ab", u"a*b", false},
                            {u"axyz", u"a*b", true},
                            {u".x", u".x", true},
                            {u"a.txt", u"a.tx?", true},
                            {u"a.tx", u"a.tx?", false},
                            {u"d\\e.f", u"x\\e.f", true},
                            {u"a", u"", false},
                            {u"a.b.c", u"a.b.?", true}};
    for (const Row& row : rows) {
        EXPECT_EQ(CVirtualFileSystem::MatchName(Path(row.name), row.pattern), row.matches)
            << Readable(row.name) << ' ' << Readable(row.pattern);
    }
    for (const char16_t* name : {u"abc.txt", u"ab.txt", u"d\\x"}) {
        Write(Path(name));
    }
    EXPECT_EQ(Listing(u"", u"*"), u"ab.txt abc.txt d\\ ") << "the lone star needs no match";
    EXPECT_EQ(Listing(u"", u"?*"), u"");
    EXPECT_EQ(Listing(u"", u"abc*.txt"), u"");
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
    if (!Platform::FaultsAvailable()) {
        GTEST_SKIP() << "this build has no fault hook";
    }
    Platform::ArmFault("GlobalMemoryStatusEx", 1, 1450, Platform::FaultMode::Once);
    const auto failure = Raised<CInternalError>([] { System().GetFreeSpace(Path(u"")); });
    EXPECT_EQ(failure ? failure->code : 0, 1450U);
    Write(Path(u"old"), "old");
    const std::function<void()> actions[] = {
        [] { CFile().Open(Path(u"p\\q\\new"), WriteMode); },
        [] { CFile().Open(Path(u"old"), ReadMode); },
        [] { System().CreateDirectory(Path(u"p\\q\\r"), false); },
        [] { System().CopyFile(Path(u"s\\copy"), Path(u"old")); },
        [] { Listing(u"", u"o*"); },
    };
    for (const auto& action : actions) {
        for (std::int32_t nth = 1, seen = nth; seen >= nth; ++nth) {
            Platform::ArmFault("allocation", nth, 8, Platform::FaultMode::Once);
            try {
                action();
            } catch (CException* exception) {
                delete exception;
            }
            seen = Platform::FaultCallsSeen();
            Platform::DisarmFaults();
            EXPECT_EQ(Content(Path(u"old")), "old") << "action " << &action - actions << ", " << nth;
            EXPECT_TRUE(System().CheckFile(Path(u"old"), OM_ReadWrite | OM_ShareExclusive)) << "no handle is left";
            const std::string copy = Content(Path(u"s\\copy"));
            EXPECT_TRUE(copy == "old" || copy == "(missing)") << nth;
            System().TryDeleteFile(Path(u"p\\q\\new"));
            System().TryDeleteFile(Path(u"s\\copy"));
        }
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
    constexpr int rounds = 300;
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (char16_t name = u'a'; name < u'e'; ++name) {
        threads.emplace_back([name, &wrong] {
            ThreadErrorMode.Get()->NoExceptions = false;
            for (int round = 0; round < rounds; ++round) {
                const CUnicodeString own = Path(u"shared\\") + name + CUnicodeString::FromInt(round % 7);
                try {
                    Write(own, std::string(70'000, static_cast<char>(name)));
                    wrong += Content(own) == std::string(70'000, static_cast<char>(name)) ? 0 : 1;
                    CFile().Open(Path(u"shared\\common"), OM_Read | OM_ShareDenyNone | OM_Create | OM_NoTruncate);
                    static_cast<void>(Listing(u"shared"));
                    System().MoveFile(own + u".moved", own);
                    wrong += System().CheckFile(own, FA_Exists) ? 1 : 0;
                    System().DeleteFile(own + u".moved");
                    System().TryDeleteFile(Path(u"shared\\common"));
                } catch (CException* exception) {
                    delete exception;
                    ++wrong;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}
