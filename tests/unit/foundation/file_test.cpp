#include "foundation/inc/file.h"

#include "foundation/inc/filesystem.h"
#include "foundation/inc/nativefile.h"
#include "foundation/inc/virtualfilesystem.h"
#include "platform/inc/faults.h"
#include "platform/inc/files.h"
#include "tests/support/folder.h"
#include "tests/support/recordinghandler.h"
#include "tests/support/text.h"
#include <functional>

using namespace Tsx;

TEST(File, ModesBecomeTheSystemsValues) {
    // Each row: mode, access, share mode, disposition.
    constexpr std::uint32_t rows[][4] = {
        {32, 0x80000000, 1, 3},     {4129, 0x40000000, 1, 2},   {4113, 0x40000000, 0, 2},   {12321, 0x40000000, 1, 4},
        {0x32, 0xC0000000, 2, 3},   {0x4040, 0x80000000, 3, 1}, {0x5040, 0x80000000, 3, 2}, {0x6040, 0x80000000, 3, 1},
        {0x7040, 0x80000000, 3, 4}, {0x2040, 0x80000000, 3, 3}};
    for (const auto& [mode, access, share, disposition] : rows) {
        EXPECT_EQ(CFile::GetDesiredAccess(mode), access) << mode;
        EXPECT_EQ(CFile::GetShareMode(mode), share) << mode;
        EXPECT_EQ(CFile::GetDisposition(mode), disposition) << mode;
    }
    EXPECT_TRUE(Raised<CInternalError>([] { CFile::GetDesiredAccess(0x23); }));
    for (const std::uint32_t share : {0x00U, 0x50U, 0x60U, 0x70U}) {
        EXPECT_TRUE(Raised<CInternalError>([&] { CFile::GetShareMode(share); })) << share;
    }
}

TEST(File, WritesAndReadsAtItsPosition) {
    const CTestFolder folder;
    CFile file;
    file.Open(folder / u".\\f", OM_ReadWrite | OM_ShareExclusive | OM_Create);
    EXPECT_EQ(file.GetFileName(), folder / u"f");
    file.Write("0123456789", 10);
    EXPECT_TRUE(file.IsEndOfFile());
    EXPECT_EQ(file.Seek(-4, SeekFromEnd), 6);
    EXPECT_EQ(file.Seek(-4, SeekFromCurrent), 2);
    char buffer[16] = {};
    EXPECT_EQ(file.Read(buffer, 3), 3);
    EXPECT_STREQ(buffer, "234");
    EXPECT_EQ(file.GetPosition(), 5);
    EXPECT_FALSE(file.IsEndOfFile());
    EXPECT_EQ(file.Read(buffer, 16), 5) << "fewer at the end";
    const auto badSeek = Raised<CFileException>([&] { file.Seek(-1, SeekFromStart); });
    ASSERT_TRUE(badSeek);
    EXPECT_EQ(badSeek->cause, 9U);
    constexpr std::int64_t wordOfFailure = 0x1'FFFF'FFFF; // the low word alone would stand for a failure
    EXPECT_EQ(file.Seek(wordOfFailure, SeekFromStart), wordOfFailure);
    EXPECT_EQ(file.GetPosition(), wordOfFailure);
    file.SetLength(0x8000'0000);
    EXPECT_EQ(file.GetLength(), 0x8000'0000);
    EXPECT_TRUE(Raised<CInternalError>([&] { static_cast<void>(file.GetLength32()); }));
    file.SetLength(7);
    EXPECT_EQ(file.GetPosition(), 7) << "the new end";
    EXPECT_EQ(file.GetLength32(), 7);
    file.Flush();
    file.Close();
    EXPECT_EQ(folder.Content(u"f"), "0123456");
    file.Open(folder / u"f", 12321);
    file.Seek(0, SeekFromEnd);
    file.Write("+", 1);
    file.Abort();
    EXPECT_EQ(folder.Content(u"f"), "0123456+");
}

TEST(File, WrongCallsAreInternalErrors) {
    const CTestFolder folder;
    CFile file;
    CNativeFile native;
    char byte = 0;
    for (CBaseFile* closed : {static_cast<CBaseFile*>(&file), static_cast<CBaseFile*>(&native)}) {
        EXPECT_EQ(closed->Read(nullptr, 0), 0);
        closed->Write(nullptr, 0);
        closed->Abort();
        closed->Close();
        const std::function<void()> calls[] = {[&] { closed->Read(&byte, 1); },
                                               [&] { closed->Write(&byte, 1); },
                                               [&] { closed->GetFileName(); },
                                               [&] { static_cast<void>(closed->GetPosition()); },
                                               [&] { closed->Seek(0, SeekFromStart); },
                                               [&] { closed->SetLength(0); },
                                               [&] { static_cast<void>(closed->GetLength()); },
                                               [&] { closed->Flush(); },
                                               [&] { static_cast<void>(closed->IsEndOfFile()); }};
        for (const auto& call : calls) {
            EXPECT_TRUE(Raised<CInternalError>(call)) << "call " << &call - calls << " of a closed file";
        }
    }
    EXPECT_TRUE(Raised<CInternalError>([&] { file.Open(folder / u"f", OM_Write | OM_Create); })) << "no sharing";
    EXPECT_EQ(folder.Content(u"f"), "(missing)") << "before any file is touched";
    file.Open(folder / u"f", 4113);
    EXPECT_TRUE(Raised<CInternalError>([&] { file.Open(folder / u"g", 4113); })) << "open already";
    EXPECT_TRUE(Raised<CInternalError>([&] { file.Read(nullptr, 1); }));
    EXPECT_TRUE(Raised<CInternalError>([&] { file.Write(&byte, -1); }));
    EXPECT_TRUE(Raised<CInternalError>([&] { file.SetLength(-1); }));
}

TEST(File, OpensByDispositionAndShareMode) {
    const CTestFolder folder;
    folder.Write(u"old", "12345");
    folder.Write(u"hidden", "12345");
    CFileSystemBase& files = FileSystem::GetFileSystem(folder.Path());
    files.SetAttributes(folder / u"hidden", Platform::FileAttributeHidden);
    struct Row {
        const char* name;
        const char16_t* file;
        std::uint32_t mode;
        std::uint32_t cause; // 0: opens
        std::int64_t length;
    };
    constexpr std::uint32_t write = OM_Write | OM_ShareDenyNone;
    constexpr Row rows[] = {{"existing, missing", u"a", write, 2, 0},
                            {"existing, missing directory", u"no\\a", write | OM_Create, 3, 0},
                            {"existing, there", u"old", write, 0, 5},
                            {"new, there", u"old", write | OM_CreateNew, 5, 0},
                            {"new, missing", u"new", write | OM_CreateNew, 0, 0},
                            {"always, keeping", u"old", write | OM_Create | OM_NoTruncate, 0, 5},
                            {"always, emptying", u"old", write | OM_Create | OM_CreateNew, 0, 0},
                            {"always, hidden", u"hidden", write | OM_Create, 0, 0}};
    for (const Row& row : rows) {
        CFile file;
        const auto failure = Raised<CFileException>([&] { file.Open(folder / row.file, row.mode); });
        EXPECT_EQ(failure ? failure->cause : 0, row.cause) << row.name;
        EXPECT_EQ(file.IsOpen(), !failure) << row.name;
        EXPECT_TRUE(!file.IsOpen() || file.GetLength() == row.length) << row.name;
    }
    EXPECT_TRUE(files.GetAttributes(folder / u"hidden") & Platform::FileAttributeHidden) << "and stays hidden";

    CFile reader;
    CFile second;
    reader.Open(folder / u"old", OM_Read | OM_ShareDenyWrite);
    const auto denied = Raised<CFileException>([&] { second.Open(folder / u"old", write); });
    EXPECT_EQ(denied ? denied->cause : 0, 11U);
    second.Open(folder / u"old", OM_Read | OM_ShareDenyWrite);
    const auto routed = Raised<CFileException>([&] { CFile().Open(CVirtualFileSystem::GetRootName() + u"a", 32); });
    EXPECT_EQ(routed ? routed->cause : 0, 2U) << "found by no system but the one in memory";
}

TEST(File, FailuresOfTheSystem) {
    SKIP_WITHOUT_FAULTS();
    const CTestFolder folder;
    CFile file;
    char byte = 0;
    struct Row {
        const char* function;
        std::function<void()> call;
        bool opens = false;
    };
    const Row rows[] = {{"GetFullPathName", [&] { file.Open(folder / u"f", 4113); }, true},
                        {"CreateFile", [&] { file.Open(folder / u"f", 4113); }, true},
                        {"ReadFile", [&] { file.Read(&byte, 1); }},
                        {"WriteFile", [&] { file.Write(&byte, 1); }},
                        {"SetFilePointer", [&] { file.Seek(0, SeekFromStart); }},
                        {"SetEndOfFile", [&] { file.SetLength(0); }},
                        {"GetFileSize", [&] { static_cast<void>(file.GetLength()); }},
                        {"FlushFileBuffers", [&] { file.Flush(); }},
                        {"CloseHandle", [&] { file.Close(); }}};
    for (const Row& row : rows) {
        file.Close();
        if (!row.opens) {
            file.Open(folder / u"f", OM_ReadWrite | OM_ShareExclusive | OM_Create);
        }
        Platform::ArmFault(row.function, 1, 112, Platform::FaultMode::Once);
        const auto failure = Raised<CFileException>(row.call);
        Platform::DisarmFaults();
        ASSERT_TRUE(failure) << row.function;
        EXPECT_EQ(failure->cause, 13U) << row.function;
        EXPECT_EQ(failure->fileName, folder / u"f") << row.function;
    }
    EXPECT_FALSE(file.IsOpen()) << "closed, although closing failed";

    CRecordingHandler handler;
    const CMessageHandlerScope scope(&handler);
    {
        CFile closedByDestructor;
        closedByDestructor.Open(folder / u"f", 32);
        Platform::ArmFault("CloseHandle", 1, 112, Platform::FaultMode::Once);
    }
    EXPECT_EQ(handler.texts.size(), 1U) << "a failure does not leave the destructor";
    file.Open(folder / u"f", 32);
    Platform::ArmFault("CloseHandle", 1, 112, Platform::FaultMode::Once);
    file.Abort();
    EXPECT_EQ(handler.texts.size(), 1U) << "nor is it told by Abort";
    Platform::DisarmFaults();
}
