// Paths as texts, files by name, and mappings of files and of memory.
#include "foundation/inc/file.h"
#include "foundation/inc/filemapping.h"
#include "foundation/inc/nativefile.h"
#include "foundation/inc/nativefilesystem.h"
#include "foundation/inc/pathkey.h"
#include "foundation/inc/virtualfilesystem.h"
#include "platform/inc/faults.h"
#include "platform/inc/mappings.h"
#include "tests/support/folder.h"
#include "tests/support/recordinghandler.h"
#include <compare>
#include <cstring>
#include <tuple>

using namespace Tsx;

TEST(FileSystem, TypesComponentsAndBack) {
    using TRow = std::tuple<TPathType, const char16_t*, const char16_t*, const char16_t*>;
    for (const auto& [type, path, components, joined] :
         {TRow(PT_Relative, u" \t\x3000", u"", u""), TRow(PT_Relative, u"a\\\\\\b\\", u"a|b|", u"a\\b"),
          TRow(PT_RootRelative, u"\\", u"", u"\\"), TRow(PT_RootRelative, u"\\/x", u"x|", u"\\x"),
          TRow(PT_RootRelative, u"/:x", u":x|", u"\\:x"), TRow(PT_UNC, u"\\\\", u"", u"\\\\"),
          TRow(PT_UNC, u"\\\\srv\\share\\x", u"srv|share|x|", u"\\\\srv\\share\\x"),
          TRow(PT_DriveRelative, u"C:", u"C:|", u"C:"), TRow(PT_DriveRelative, u"1:x\\y", u"1:|x|y|", u"1:x\\y"),
          TRow(PT_DriveAbsolute, u"C:\\", u"C:|", u"C:\\"),
          TRow(PT_DriveAbsolute, u"C:/a\\b ", u"C:|a|b|", u"C:\\a\\b")}) {
        CArray<CUnicodeString> parts;
        parts.Append(path);
        EXPECT_EQ(FileSystem::SplitPath(parts[0], parts), type) << Readable(path);
        CUnicodeString text;
        for (const CUnicodeString& part : parts) {
            text += part + u'|';
        }
        EXPECT_EQ(text, components);
        EXPECT_EQ(FileSystem::JoinPath(parts, type), joined);
    }
    EXPECT_EQ(FileSystem::GetPathType(u" C:\\"), PT_Relative) << "no trimming here";
    EXPECT_TRUE(Raised<CInternalError>([] { FileSystem::JoinPath({}, static_cast<TPathType>(5)); }));
}

TEST(FileSystem, FieldsAndBack) {
    constexpr const char16_t* rows[][5] = {{u"C:\\a\\b.tar.gz", u"C:", u"\\a\\", u"b.tar", u".gz"},
                                           {u"a/b", u"", u"a/", u"b", u""},
                                           {u"C:.x", u"C:", u"", u"", u".x"},
                                           {u"\\\\srv\\sh\\f.", u"", u"\\\\srv\\sh\\", u"f", u"."},
                                           {u"", u"", u"", u"", u""}};
    for (const auto& [path, drive, dir, name, ext] : rows) {
        const CUnicodeString fields[] = {drive, dir, name, ext};
        CUnicodeString parts[] = {u"", u"", path, u""}; // an output may be the path
        FileSystem::SplitName(parts[2], parts[0], parts[1], parts[2], parts[3]);
        const CUnicodeString alone[] = {FileSystem::GetDrive(path), FileSystem::GetDirectory(path),
                                        FileSystem::GetName(path), FileSystem::GetExt(path)};
        EXPECT_TRUE(std::equal(fields, fields + 4, parts) && std::equal(fields, fields + 4, alone)) << Readable(path);
        EXPECT_EQ(FileSystem::MergeParts(drive, dir, name, ext), path);
    }
    EXPECT_EQ(FileSystem::MergeParts(u"Cxy", u"a", u"b", u"c"), u"C:a\\b.c") << "what is missing is added";
    CUnicodeString path(u"C:\\a.b\\c.txt");
    FileSystem::ReplaceExt(path, u"log");
    EXPECT_EQ(path, u"C:\\a.b\\c.log");
}

TEST(FileSystem, TrailingSlashesAndRoots) {
    // Each row: the path, with a separator, without one, and its root.
    using TRow = std::tuple<const char16_t*, const char16_t*, const char16_t*, const char16_t*>;
    for (const auto& [path, added, without, root] :
         {TRow(u"", u"\\", u"", u"\\"), TRow(u"C:", u"C:\\", u"C:\\", u"C:\\"),
          TRow(u"C:\\", u"C:\\", u"C:\\", u"C:\\"), TRow(u"1:\\", u"1:\\", u"1:", u"1:\\"),
          TRow(u"a/b", u"a/b/", u"a/b", u"\\"), TRow(u"a/b\\c", u"a/b\\c\\", u"a/b\\c", u"\\"),
          TRow(u"/", u"/", u"/", u"\\"), TRow(u"ab\\\\", u"ab\\\\", u"ab\\", u"\\"),
          TRow(u"\\\\srv", u"\\\\srv\\", u"\\\\srv", u"\\\\srv\\"),
          TRow(u"//srv/sh/x", u"//srv/sh/x/", u"//srv/sh/x", u"//srv/sh/"),
          TRow(u" C:a", u" C:a\\", u" C:a", u"C:\\")}) {
        CUnicodeString removed = path;
        FileSystem::RemoveTrailingSlash(removed);
        EXPECT_TRUE(FileSystem::AddTrailingSlash(path) == added && removed == without) << Readable(path);
        EXPECT_EQ(FileSystem::GetRoot(path), root);
    }
}

TEST(FileSystem, TwoPathsGiveOne) {
    using TRow = std::tuple<const char16_t*, const char16_t*, const char16_t*>;
    for (const auto& [first, second, result] :
         {TRow(u"", u"\\b", u"\\b"), TRow(u"a/b", u"c", u"a/b/c"), TRow(u"a", u"/b", u"a/b"),
          TRow(u"a\\", u"/b", u"a/b"), TRow(u"C:\\a", u"", u"C:\\a\\")}) {
        EXPECT_EQ(FileSystem::Concat(first, second), result);
    }
    for (const auto& [folder, file, result] :
         {TRow(u"C:\\a", u"b\\c.txt", u"C:\\a\\c.txt"), TRow(u" a/b ", u"c", u"a/b/c"),
          TRow(u"\\\\s\\h", u"C:.x", u"\\\\s\\h\\.x")}) {
        EXPECT_EQ(FileSystem::MergeName(folder, file), result);
    }
    for (const auto& [base, path, result] :
         {TRow(u"C:\\a", u"b", u"C:\\a\\b"), TRow(u"C:\\a", u"\\b", u"C:\\b"),
          TRow(u"\\\\s\\h\\x", u"/b", u"\\\\s\\h/b"), TRow(u"C:\\a", u"\\\\s\\h", u"\\\\s\\h"),
          TRow(u"C:\\a", u"D:/b", u"D:/b")}) {
        EXPECT_EQ(FileSystem::GetAbsoluteName(base, path), result);
    }
    EXPECT_EQ(FileSystem::MergeName(u"d", u"n", u"e"), u"d\\n.e");
}

TEST(FileSystem, ComparesPaths) {
    using TRow = std::tuple<const char16_t*, const char16_t*, int>;
    for (const auto& [a, b, order] :
         {TRow(u"C:\\a\\", u"c:/A", 0), TRow(u"a", u"a\\\\", 0), TRow(u"", u"/\\", 0), TRow(u"a", u"ab", -1),
          TRow(u"B", u"a", 1), TRow(u"a\\b", u"a", 1), TRow(u"a\\b", u"ab", -1), TRow(u"a!", u"a\\", -1),
          TRow(u"a!", u"a", 1), TRow(u"a\\\\b", u"a\\b", -1)}) {
        EXPECT_TRUE((FileSystem::Compare(a, b) <=> 0) == (order <=> 0)) << Readable(a) << " " << Readable(b);
        EXPECT_TRUE((FileSystem::Compare(b, a) <=> 0) == (0 <=> order)) << Readable(b) << " " << Readable(a);
        EXPECT_EQ(HashPath(a) == HashPath(b), order == 0) << Readable(a) << " " << Readable(b);
    }
    EXPECT_EQ(HashPath(u"/\\"), 0U);
    EXPECT_EQ(HashPath(u"a/b\\"), (65U * 33 + 92) * 33 + 66);
    CUnicodeString component;
    char16_t separator = 0;
    std::int32_t pos = 2;
    EXPECT_TRUE(FileSystem::NextComponent(u"a/bc", pos, component, separator) && pos == 4 && separator == 0);
    EXPECT_FALSE(FileSystem::NextComponent(u"a/bc", pos, component, separator));
    for (std::int32_t outside : {-1, 3}) {
        EXPECT_TRUE(Raised<CInternalError>([&] { FileSystem::NextComponent(u"ab", outside, component, separator); }));
    }
}

TEST(FileSystem, RoutesByTheRoot) {
    for (const auto& [path, isVirtual] : {std::pair(u"\\\\OSTREL\\tessarix\\virtualfiles$\\", true),
                                          {u"\\\\Ostrel\\Tessarix/VirtualFiles$\\a", false},
                                          {u" \\\\Ostrel\\Tessarix\\VirtualFiles$\\a", false},
                                          {u"", false}}) {
        CFileSystemBase* system = &FileSystem::GetFileSystem(path);
        EXPECT_EQ(dynamic_cast<CVirtualFileSystem*>(system) != nullptr, isVirtual) << Readable(path);
    }
    EXPECT_EQ(CVirtualFileSystem::GetRootName(), u"\\\\Ostrel\\Tessarix\\VirtualFiles$\\");
    EXPECT_TRUE(Raised<CInternalError>([] { const CNativeFileSystem second; }));
    EXPECT_TRUE(Raised<CInternalError>([] { const CVirtualFileSystem second; }));
    EXPECT_FALSE(FileSystem::GetFileSystem(u"x").CheckFile(u"", FA_Exists)) << "the first one stays in its place";
}

TEST(File, ModesBecomeTheSystemsValues) {
    // Each row: mode, access, share mode, disposition.
    constexpr std::uint32_t rows[][4] = {
        {0x20, 0x80000000, 1, 3},   {0x1021, 0x40000000, 1, 2}, {0x1011, 0x40000000, 0, 2}, {0x3021, 0x40000000, 1, 4},
        {0x32, 0xC0000000, 2, 3},   {0x4040, 0x80000000, 3, 1}, {0x5040, 0x80000000, 3, 2}, {0x6040, 0x80000000, 3, 1},
        {0x7040, 0x80000000, 3, 4}, {0x2040, 0x80000000, 3, 3}};
    for (const auto& [mode, access, share, disposition] : rows) {
        EXPECT_EQ(CFile::GetDesiredAccess(mode), access) << mode;
        EXPECT_EQ(CFile::GetShareMode(mode), share) << mode;
        EXPECT_EQ(CFile::GetDisposition(mode), disposition) << mode;
    }
    ExpectRefused({[] { CFile::GetDesiredAccess(0x23); }, [] { CFile::GetShareMode(0x50); }});
}

TEST(File, WritesAndReadsAtItsPosition) {
    const CTestFolder folder;
    CFile file;
    file.Open(folder / u".\\f", OM_ReadWrite | OM_ShareExclusive | OM_Create);
    EXPECT_EQ(file.GetFileName(), folder / u"f");
    EXPECT_EQ(Raised<CFileException>([&] { CFile().Open(folder / u"f", OM_Read | OM_ShareDenyNone); })->cause,
              FC_SharingViolation);
    file.Write("0123456789", 10);
    EXPECT_TRUE(file.IsEndOfFile());
    EXPECT_EQ(file.Seek(-4, SeekFromEnd), 6);
    EXPECT_EQ(file.Seek(-4, SeekFromCurrent), 2);
    char buffer[16] = {};
    EXPECT_EQ(file.Read(buffer, 3), 3);
    EXPECT_STREQ(buffer, "234");
    EXPECT_TRUE(file.GetPosition() == 5 && !file.IsEndOfFile());
    EXPECT_EQ(file.Read(buffer, 16), 5) << "fewer at the end";
    EXPECT_EQ(Raised<CFileException>([&] { file.Seek(-1, SeekFromStart); })->cause, FC_BadSeek);
    constexpr std::int64_t wordOfFailure = 0x1'FFFF'FFFF; // the low word alone would stand for a failure
    EXPECT_EQ(file.Seek(wordOfFailure, SeekFromStart), wordOfFailure);
    file.SetLength(0x8000'0000);
    EXPECT_EQ(file.GetLength(), 0x8000'0000);
    EXPECT_TRUE(Raised<CInternalError>([&] { static_cast<void>(file.GetLength32()); }));
    file.SetLength(7);
    EXPECT_TRUE(file.GetPosition() == 7 && file.GetLength32() == 7) << "at the new end";
    file.Abort();
    EXPECT_EQ(folder.Content(u"f"), "0123456");
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
        for (const auto& call : std::initializer_list<std::function<void()>>{
                 [&] { closed->Read(&byte, 1); }, [&] { closed->Write(&byte, 1); }, [&] { closed->GetFileName(); },
                 [&] { static_cast<void>(closed->GetPosition()); }, [&] { closed->Seek(0, SeekFromStart); },
                 [&] { closed->SetLength(0); }, [&] { static_cast<void>(closed->GetLength()); },
                 [&] { static_cast<void>(closed->IsEndOfFile()); }, [&] { closed->Flush(); }}) {
            EXPECT_TRUE(Raised<CInternalError>(call));
            EXPECT_TRUE(closed == &native || ShownInstead(call) == 1);
        }
    }
    EXPECT_TRUE(Raised<CInternalError>([&] { file.Open(folder / u"f", OM_Write | OM_Create); }));
    EXPECT_EQ(folder.Content(u"f"), "(missing)") << "no sharing: refused before any file is touched";
    file.Open(folder / u"f", OM_Write | OM_ShareExclusive | OM_Create);
    ExpectRefused({[&] { file.Open(folder / u"g", OM_Write | OM_ShareExclusive | OM_Create); },
                   [&] { file.Read(nullptr, 1); }, [&] { file.Write(&byte, -1); }});
    EXPECT_TRUE(Raised<CInternalError>([&] { file.SetLength(-1); }));
}

TEST(File, AHiddenFileThatIsMadeAnewStaysHidden) {
    const CTestFolder folder;
    const CUnicodeString path = folder.Write(u"hidden", "12345");
    CFileSystemBase& files = FileSystem::GetFileSystem(path);
    files.SetAttributes(path, Platform::FileAttributeHidden);
    CFile file;
    file.Open(path, OM_Write | OM_ShareDenyNone | OM_Create | OM_NoTruncate);
    EXPECT_EQ(file.GetLength(), 5);
    file.Close();
    file.Open(path, OM_Write | OM_ShareDenyNone | OM_Create);
    EXPECT_TRUE(file.GetLength() == 0 && (files.GetAttributes(path) & Platform::FileAttributeHidden));
}

TEST(File, FailuresOfTheSystem) {
    SKIP_WITHOUT_FAULTS();
    const CTestFolder folder;
    CFile file;
    char byte = 0;
    const auto open = [&folder](CFile& it) { it.Open(folder / u"f", OM_ReadWrite | OM_ShareExclusive | OM_Create); };
    const auto arm = [](const char* function) { Platform::ArmFault(function, 1, 112, Platform::FaultMode::Once); };
    using TRow = std::pair<const char*, std::function<void()>>;
    for (const auto& [function, call] :
         {TRow("GetFullPathName", [&] { open(*std::make_unique<CFile>()); }),
          TRow("CreateFile", [&] { open(*std::make_unique<CFile>()); }), TRow("ReadFile", [&] { file.Read(&byte, 1); }),
          TRow("WriteFile", [&] { file.Write(&byte, 1); }),
          TRow("SetFilePointer", [&] { file.Seek(0, SeekFromStart); }),
          TRow("SetEndOfFile", [&] { file.SetLength(0); }),
          TRow("GetFileSize", [&] { static_cast<void>(file.GetLength()); }),
          TRow("FlushFileBuffers", [&] { file.Flush(); }), TRow("CloseHandle", [&] { file.Close(); })}) {
        file.Close();
        open(file);
        arm(function);
        const auto failure = Raised<CFileException>(call);
        Platform::DisarmFaults();
        EXPECT_TRUE(failure && failure->cause == FC_DiskFull && failure->fileName == folder / u"f") << function;
    }
    EXPECT_FALSE(file.IsOpen()) << "closed, although closing failed";
    CRecordingHandler handler;
    const CMessageHandlerScope scope(&handler);
    for (const std::size_t told : {0U, 1U}) { // by Abort, and by the destructor, which no failure leaves
        {
            CFile last;
            open(last);
            arm("CloseHandle");
            told == 0 ? last.Abort() : void();
        }
        EXPECT_EQ(handler.texts.size(), told);
    }
    Platform::DisarmFaults();
}

TEST(FileMapping, ViewsBeginAnywhere) {
    CMemoryMapping mapping(1, 3 * ViewSize);
    auto* whole = static_cast<char*>(mapping.MapView(Platform::FileMapWrite, 0, 0));
    std::memcpy(whole + ViewSize + 100, "abc", 4);
    mapping.Flush();
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
}

TEST(FileMapping, WrongCallsAreInternalErrors) {
    CMapping closed;
    CMemoryMapping mapping(1, 100);
    ExpectRefused({[&] { closed.MapView(Platform::FileMapRead, 0, 1); }, [&] { closed.SetSize(1); },
                   [&] { closed.UnmapView(nullptr); }, [&] { mapping.Attach(mapping.Handle); },
                   [&] { mapping.MapView(Platform::FileMapRead, -1, 1); }, [&] { mapping.SetSize(0); }});
    EXPECT_TRUE(Raised<CLastErrorException>([&] { mapping.CMapping::SetSize(0); })) << "the system has none of it";
    EXPECT_FALSE(mapping.IsOpen() || mapping.File);
}
