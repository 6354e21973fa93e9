// Files by name, and mappings of files and of memory.
#include "foundation/inc/file.h"

#include "foundation/inc/filemapping.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/nativefile.h"
#include "platform/inc/faults.h"
#include "platform/inc/files.h"
#include "platform/inc/mappings.h"
#include "tests/support/folder.h"
#include "tests/support/recordinghandler.h"
#include <cstring>
#include <functional>
#include <tuple>

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
    EXPECT_TRUE(Raised<CInternalError>([] { CFile::GetShareMode(0x50); }));
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
    EXPECT_EQ(badSeek ? badSeek->cause : 0, FC_BadSeek);
    constexpr std::int64_t wordOfFailure = 0x1'FFFF'FFFF; // the low word alone would stand for a failure
    EXPECT_EQ(file.Seek(wordOfFailure, SeekFromStart), wordOfFailure);
    EXPECT_EQ(file.GetPosition(), wordOfFailure);
    file.SetLength(0x8000'0000);
    EXPECT_EQ(file.GetLength(), 0x8000'0000);
    EXPECT_TRUE(Raised<CInternalError>([&] { static_cast<void>(file.GetLength32()); }));
    file.SetLength(7);
    EXPECT_EQ(file.GetPosition(), 7) << "the new end";
    EXPECT_EQ(file.GetLength32(), 7);
    file.Close();
    file.Open(folder / u"f", OM_Write | OM_ShareDenyWrite | OM_Create | OM_NoTruncate);
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
    const auto isRefused = [](const auto& call) { EXPECT_TRUE(Raised<CInternalError>(call)); };
    for (CBaseFile* closed : {static_cast<CBaseFile*>(&file), static_cast<CBaseFile*>(&native)}) {
        EXPECT_EQ(closed->Read(nullptr, 0), 0);
        closed->Write(nullptr, 0);
        closed->Abort();
        closed->Close();
        isRefused([&] { closed->Read(&byte, 1); });
        isRefused([&] { closed->Write(&byte, 1); });
        isRefused([&] { closed->GetFileName(); });
        isRefused([&] { static_cast<void>(closed->GetPosition()); });
        isRefused([&] { closed->Seek(0, SeekFromStart); });
        isRefused([&] { closed->SetLength(0); });
        isRefused([&] { static_cast<void>(closed->GetLength()); });
        isRefused([&] { static_cast<void>(closed->IsEndOfFile()); });
        isRefused([&] { closed->Flush(); });
    }
    EXPECT_EQ(ShownInstead([&] {
                  file.Write(&byte, 1);
                  file.Flush();
              }),
              2U);
    isRefused([&] { file.Open(folder / u"f", OM_Write | OM_Create); });
    EXPECT_EQ(folder.Content(u"f"), "(missing)") << "no sharing: refused before any file is touched";
    file.Open(folder / u"f", OM_Write | OM_ShareExclusive | OM_Create);
    isRefused([&] { file.Open(folder / u"g", OM_Write | OM_ShareExclusive | OM_Create); });
    isRefused([&] { file.Read(nullptr, 1); });
    isRefused([&] { file.Write(&byte, -1); });
    isRefused([&] { file.SetLength(-1); });
}

TEST(File, OpensByDispositionAndShareMode) {
    const CTestFolder folder;
    folder.Write(u"old", "12345");
    folder.Write(u"hidden", "12345");
    CFileSystemBase& files = FileSystem::GetFileSystem(folder.Path());
    files.SetAttributes(folder / u"hidden", Platform::FileAttributeHidden);
    constexpr std::uint32_t write = OM_Write | OM_ShareDenyNone;
    CFile reader;
    reader.Open(folder.Write(u"shared", "12345"), OM_Read | OM_ShareDenyWrite);
    for (const auto& [name, mode, cause, length] : // the length where it opens
         {std::tuple(u"a", write, FC_FileNotFound, 0),
          {u"no\\a", write | OM_Create, FC_BadPath, 0},
          {u"old", write, FC_None, 5},
          {u"old", write | OM_CreateNew, FC_AccessDenied, 0},
          {u"old", write | OM_Create | OM_NoTruncate, FC_None, 5},
          {u"old", write | OM_Create | OM_CreateNew, FC_None, 0},
          {u"hidden", write | OM_Create, FC_None, 0},
          {u"shared", write, FC_SharingViolation, 0},
          {u"shared", OM_Read | OM_ShareDenyWrite, FC_None, 5}}) {
        CFile file;
        const auto failure = Raised<CFileException>([&, path = folder / name, how = mode] { file.Open(path, how); });
        EXPECT_EQ(failure ? failure->cause : FC_None, cause) << Readable(name) << ' ' << mode;
        EXPECT_EQ(file.IsOpen() ? file.GetLength() : 0, length) << Readable(name) << ' ' << mode;
    }
    EXPECT_TRUE(files.GetAttributes(folder / u"hidden") & Platform::FileAttributeHidden) << "and stays hidden";
}

TEST(File, FailuresOfTheSystem) {
    SKIP_WITHOUT_FAULTS();
    const CTestFolder folder;
    CFile file;
    char byte = 0;
    constexpr std::uint32_t mode = OM_ReadWrite | OM_ShareExclusive | OM_Create;
    const auto arm = [](const char* function) { Platform::ArmFault(function, 1, 112, Platform::FaultMode::Once); };
    for (const auto& [function, call] : std::initializer_list<std::pair<const char*, std::function<void()>>>{
             {"GetFullPathName", [&] { CFile().Open(folder / u"f", mode); }},
             {"CreateFile", [&] { CFile().Open(folder / u"f", mode); }},
             {"ReadFile", [&] { file.Read(&byte, 1); }},
             {"WriteFile", [&] { file.Write(&byte, 1); }},
             {"SetFilePointer", [&] { file.Seek(0, SeekFromStart); }},
             {"SetEndOfFile", [&] { file.SetLength(0); }},
             {"GetFileSize", [&] { static_cast<void>(file.GetLength()); }},
             {"FlushFileBuffers", [&] { file.Flush(); }},
             {"CloseHandle", [&] { file.Close(); }}}) {
        file.Close();
        file.Open(folder / u"f", mode);
        arm(function);
        const auto failure = Raised<CFileException>(call);
        Platform::DisarmFaults();
        EXPECT_EQ(failure ? failure->cause : 0, FC_DiskFull) << function;
        EXPECT_EQ(failure ? failure->fileName : u"", folder / u"f") << function;
    }
    EXPECT_FALSE(file.IsOpen()) << "closed, although closing failed";

    CRecordingHandler handler;
    const CMessageHandlerScope scope(&handler);
    {
        CFile closedByDestructor;
        closedByDestructor.Open(folder / u"f", mode);
        arm("CloseHandle");
    }
    EXPECT_EQ(handler.texts.size(), 1U) << "a failure does not leave the destructor";
    file.Open(folder / u"f", mode);
    arm("CloseHandle");
    file.Abort();
    EXPECT_EQ(handler.texts.size(), 1U) << "nor is it told by Abort";
    Platform::DisarmFaults();
}

TEST(FileMapping, ViewsBeginAnywhere) {
    CMemoryMapping mapping(1, 3 * ViewSize);
    EXPECT_EQ(mapping.File, Platform::InvalidHandle());
    auto* whole = static_cast<char*>(mapping.MapView(Platform::FileMapWrite, 0, 0));
    std::memcpy(whole + ViewSize + 100, "abc", 4);
    auto* part = static_cast<char*>(mapping.MapView(Platform::FileMapRead, ViewSize + 101, 3));
    auto* rest = static_cast<char*>(mapping.MapView(Platform::FileMapRead, ViewSize + 102, 0));
    EXPECT_EQ(part + std::string(rest), "bcc");
    EXPECT_EQ(static_cast<char*>(mapping.Views.Get(part)) + 101, part) << "the system's address is on its grid";
    mapping.UnmapView(part);
    EXPECT_STREQ(rest, "c");
    EXPECT_EQ(mapping.Views.GetItemCount(), 2);

    mapping.SetSize(ViewSize);
    EXPECT_TRUE(mapping.Views.IsEmpty());
    EXPECT_STREQ(static_cast<char*>(mapping.MapView(Platform::FileMapRead, 0, 0)), "") << "the contents are lost";
    EXPECT_TRUE(Raised<CLastErrorException>([&] { mapping.MapView(Platform::FileMapRead, ViewSize, 1); }));
    mapping.Close();
    EXPECT_FALSE(mapping.IsOpen() || mapping.File);
    CMapping other;
    other.Attach(
        Platform::CreateFileMapping(Platform::InvalidHandle(), nullptr, Platform::PageReadWrite, 0, 100, nullptr));
    EXPECT_TRUE(other.Writable == 0 && other.File == Platform::InvalidHandle());
    EXPECT_EQ(*static_cast<char*>(other.MapView(Platform::FileMapRead, 99, 1)), '\0');
}

TEST(FileMapping, WrongCallsAreInternalErrors) {
    CMapping closed;
    CMemoryMapping mapping(1, 100);
    char byte = 0;
    ExpectRefused({[&] { closed.MapView(Platform::FileMapRead, 0, 1); }, [&] { closed.SetSize(1); },
                   [&] { closed.UnmapView(nullptr); }, [&] { closed.Attach(nullptr); },
                   [&] { mapping.Attach(mapping.Handle); }, [&] { mapping.UnmapView(&byte); },
                   [&] { mapping.MapView(Platform::FileMapRead, -1, 1); },
                   [&] { mapping.MapView(Platform::FileMapRead, 0, -1); }, [&] { mapping.SetSize(0); },
                   [&] { mapping.CMapping::SetSize(-1); }, [&] { const CMemoryMapping negative(1, -1); }});
    EXPECT_TRUE(mapping.IsOpen());
    EXPECT_TRUE(Raised<CLastErrorException>([&] { mapping.CMapping::SetSize(0); })) << "the system has none of it";
    EXPECT_FALSE(mapping.IsOpen() || mapping.File);
}
