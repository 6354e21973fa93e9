#include "foundation/inc/nativefilesystem.h"

#include "foundation/inc/debugflags.h"
#include "foundation/inc/file.h"
#include "foundation/src/statics.h"
#include "platform/inc/directories.h"
#include "platform/inc/faults.h"
#include "platform/inc/filenames.h"
#include "platform/inc/process.h"
#include "tests/support/folder.h"
#include "tests/support/text.h"
#include <functional>
#include <tuple>
#include <vector>

using namespace Tsx;

namespace {

constexpr std::uint32_t Normal = Platform::FileAttributeNormal;
constexpr std::uint32_t ReadOnly = Platform::FileAttributeReadOnly;
constexpr std::uint32_t Hidden = Platform::FileAttributeHidden;

CFileSystemBase& Files() {
    return FileSystem::GetFileSystem(u"");
}

CUnicodeString Sorted(const CArray<CFileStatus>& found, const CUnicodeString& below) {
    CArray<CUnicodeString> names;
    for (const CFileStatus& status : found) {
        names.Append(status.FullName.Mid(below.Length() + 1));
    }
    std::sort(names.begin(), names.end());
    CUnicodeString text;
    for (const CUnicodeString& name : names) {
        text += name + u' ';
    }
    return text;
}

/// A file of that name is open for reading, and nobody else may do anything with it.
class CHeldFile {
public:
    explicit CHeldFile(const CUnicodeString& path) { file.Open(path, OM_Read | OM_ShareExclusive); }

private:
    CFile file;
};

} // namespace

TEST(NativeFileSystem, LongAndCanonicalPaths) {
    for (const auto& [path, type, canonical] : {std::tuple(u"C:\\..\\..\\a\\.\\b", PT_DriveAbsolute, u"C:\\a\\b"),
                                                {u"C:/a/..", PT_DriveAbsolute, u"C:\\"},
                                                {u"C:\\a\\b\\..\\c\\...", PT_DriveAbsolute, u"C:\\a\\c\\..."},
                                                {u"\\\\s\\h\\x\\..\\..", PT_UNC, u"\\\\s\\h"},
                                                {u"\\\\s", PT_UNC, u"\\\\s\\"}}) {
        EXPECT_EQ(CNativeFileSystem::GetCanonicalPath(path, type), canonical) << Readable(path);
    }
    EXPECT_TRUE(Raised<CInternalError>([] { CNativeFileSystem::GetCanonicalPath(u"a\\b", PT_Relative); }));
    EXPECT_TRUE(Raised<CInternalError>([] { CNativeFileSystem::GetCanonicalPath(u" ", PT_UNC); }));

    const std::u16string tail(254, u'x'); // 260 characters with six in front
    for (const auto& [start, result] : {std::pair(u"C:\\.\\", u"C:\\.\\"),
                                        {u"C:\\.\\y", u"C:\\.\\y"},
                                        {u"C:\\.\\yz", u"\\\\?\\C:\\yz"},
                                        {u"\\\\s\\h\\..\\", u"\\\\?\\UNC\\s\\h\\"},
                                        {u"C:.\\abc", u"C:.\\abc"},
                                        {u"\\.\\abcd", u"\\.\\abcd"}}) {
        EXPECT_EQ(CNativeFileSystem::AddLongPathPrefix((start + tail).c_str()), (result + tail).c_str())
            << Readable(start);
    }
}

TEST(NativeFileSystem, FailuresNameTheirFileAndCause) {
    const CTestFolder folder;
    folder.Write(u"file");
    folder.Write(u"locked");
    folder.Write(u"full\\inner");
    folder.Write(u"locked target");
    Files().SetAttributes(folder / u"locked target", ReadOnly);
    const CHeldFile held(folder / u"locked");
    const CUnicodeString file = folder / u"file";
    const CUnicodeString missing = folder / u"missing";
    const CUnicodeString nowhere = folder / u"no\\where";
    const CUnicodeString full = folder / u"full";
    const CUnicodeString locked = folder / u"locked";
    const CUnicodeString target = folder / u"locked target";
    CFileSystemBase& files = Files();
    // Under Wine a super-user may write what is read-only, and then the copy just succeeds.
    const std::uint32_t guarded = Platform::CopyFile(file.Text(), target.Text(), false) ? 0 : 5;
    const std::tuple<const char*, std::function<void()>, std::uint32_t, CUnicodeString> rows[] = {
        {"attributes", [&] { files.GetAttributes(missing); }, 2, missing},
        {"delete", [&] { files.DeleteFile(missing); }, 2, missing},
        {"delete an open file", [&] { files.DeleteFile(locked); }, 11, locked},
        {"delete a directory", [&] { files.DeleteFile(full); }, 5, full},
        {"copy a missing file", [&] { files.CopyFile(file, missing); }, 2, missing},
        {"copy to nowhere", [&] { files.CopyFile(nowhere, file); }, 3, folder / u"no\\"},
        {"copy onto a read-only file", [&] { files.CopyFile(target, file); }, guarded, target},
        {"copy onto a directory", [&] { files.CopyFile(full, file); }, 5, full},
        {"move a missing file", [&] { files.MoveFile(file, missing); }, 2, file},
        {"move on volume", [&] { files.MoveFileOnVolume(nowhere, file); }, 3, nowhere},
        {"rename onto a file", [&] { files.RenameFile(file, target); }, 15, target},
        {"make again", [&] { files.CreateDirectory(full, true); }, 15, full},
        {"make below a file", [&] { files.CreateDirectory(folder / u"file\\a", false); }, 3, folder / u"file\\a"},
        {"remove what is not empty", [&] { files.RemoveDirectory(full); }, 7, full},
        {"set status", [&] { files.SetStatus(missing, {}); }, 2, missing},
        {"list nowhere",
         [&] {
             CArray<CFileStatus> found;
             files.FindFiles(nowhere, found, u"*");
         },
         3, nowhere},
        {"free space", [&] { files.GetFreeSpace(u"1:/x"); }, 3, u"1:\\"}};
    for (const auto& [name, operation, cause, fileName] : rows) {
        const auto failure = Raised<CFileException>(operation);
        EXPECT_EQ(failure ? failure->cause : 0, cause) << name;
        EXPECT_EQ(failure ? failure->fileName : fileName, fileName) << name;
    }
    EXPECT_FALSE(files.TryDeleteFile(locked));
    EXPECT_TRUE(Raised<CInternalError>([&] { files.CheckFile(file, OM_Read); })) << "a mode without sharing";
    EXPECT_TRUE(Raised<CInternalError>([&] { files.CloseFile(nullptr, false); }));
}

TEST(NativeFileSystem, KnowsWhatExists) {
    const CTestFolder folder;
    folder.Write(u"file");
    folder.Write(u"sub\\locked");
    const CHeldFile held(folder / u"sub\\locked");
    const std::tuple<const char*, CUnicodeString, bool, bool, bool> rows[] = {
        {"empty", u"", false, false, false},
        {"file", folder / u"file", true, true, false},
        {"file with a separator", folder / u"file\\", false, false, false},
        {"missing", folder / u"missing", false, false, false},
        {"locked", folder / u"sub\\locked", true, false, false},
        {"directory", folder / u"sub", true, false, true},
        {"directory with blanks", u" " + (folder / u"sub\\") + u" ", false, false, true},
        {"root", FileSystem::GetRoot(folder.Path()), false, false, true},
        {"drive", FileSystem::GetDrive(folder.Path()), false, false, true},
        {"no drive", u"1:\\", false, false, false}};
    for (const auto& [name, path, exists, opens, isDirectory] : rows) {
        EXPECT_EQ(Files().DirectoryExists(path), isDirectory) << name;
        if (path.Length() > 3) {
            EXPECT_EQ(Files().CheckFile(path, OM_Read | OM_ShareDenyNone), opens) << name;
            EXPECT_EQ(Files().CheckFile(path, FA_Exists), exists) << name;
        }
    }
    const std::uint32_t mode = Platform::SetErrorMode(Platform::SemFailCriticalErrors);
    Files().CheckFile(folder / u"file", FA_Exists);
    EXPECT_EQ(Platform::SetErrorMode(mode), Platform::SemFailCriticalErrors) << "the mode is put back";
}

TEST(NativeFileSystem, CopiesAndMoves) {
    const CTestFolder folder;
    folder.Write(u"a", "from a");
    folder.Write(u"b", "from b");
    Files().CopyFile(folder / u"b", folder / u"a");
    EXPECT_EQ(folder.Content(u"b"), "from a");
    folder.Write(u"hidden", "old");
    Files().SetAttributes(folder / u"hidden", Hidden);
    Files().CopyFile(folder / u"hidden", folder / u"a");
    EXPECT_EQ(folder.Content(u"hidden"), "from a") << "the system denies it, and so the target is deleted first";
    Files().MoveFile(folder / u"b", folder / u"a");
    EXPECT_EQ(folder.Content(u"a") + ", " + folder.Content(u"b"), "(missing), from a");
    folder.Write(u"c", "from c");
    Files().MoveFileOnVolume(folder / u"c", folder / u"b");
    Files().RenameFile(folder / u"c", folder / u"d");
    EXPECT_EQ(folder.Content(u"c") + ", " + folder.Content(u"d"), "(missing), from a");
    EXPECT_GT(Files().GetFreeSpace(folder.Path()), 0);
    std::uint64_t total = 0;
    // A volume that is no drive, where there is one. Wine takes a path that begins with a slash for a native one.
    if (Platform::GetDiskFreeSpaceEx(u"\\dev\\shm", nullptr, &total, nullptr)) {
        EXPECT_LE(static_cast<std::uint64_t>(Files().GetFreeSpace(u"/dev/shm")) << 10, total);
        EXPECT_LE(static_cast<std::uint64_t>(Files().GetFreeSpace(u"/dev/shm/file")) << 10, total);
    }
}

TEST(NativeFileSystem, MakesAllLevelsAndDeletesTrees) {
    const CTestFolder folder;
    Files().CreateDirectory(folder / u"a\\b/c\\", false);
    EXPECT_TRUE(Files().DirectoryExists(folder / u"a\\b\\c"));
    Files().CreateDirectory(folder / u"a\\b\\c", false);
    for (const char16_t* none : {u"1:\\x", u"1:\\x\\y\\", u""}) {
        EXPECT_TRUE(Raised<CFileException>([&] { Files().CreateDirectory(none, false); })) << Readable(none);
    }

    folder.Write(u"a\\b\\file");
    folder.Write(u"a\\b\\c\\guarded");
    Files().SetAttributes(folder / u"a\\b\\c\\guarded", ReadOnly);
    Files().CreateDirectory(folder / u"a\\guarded", true);
    Files().SetAttributes(folder / u"a\\guarded", ReadOnly);
    const auto refused = Raised<CFileException>([&] { Files().DeleteTree(folder / u"a", false); });
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->fileName, folder / u"a\\b\\c\\guarded");
    Files().DeleteTree(folder / u"a", true);
    EXPECT_FALSE(Files().CheckFile(folder / u"a", FA_Exists));
}

TEST(NativeFileSystem, LinksAndNamesThatNoPathSaysLeadNowhere) {
    const CTestFolder folder;
    folder.Write(u"outside\\kept");
    folder.Write(u"tree\\file");
    const std::filesystem::path& place = folder.Place();
    std::error_code error;
    std::filesystem::create_directory_symlink("../outside", place / "tree" / "link", error);
    if (error) {
        GTEST_SKIP() << "links to directories cannot be made here";
    }
    std::filesystem::create_directory_symlink(".", place / "tree" / "itself", error);
    std::filesystem::create_directory_symlink("outside", place / "link", error);
    std::filesystem::permissions(place / "outside" / "kept", std::filesystem::perms::owner_read);
    std::filesystem::create_symlink("../outside/kept", place / "tree" / "filelink", error);
    CArray<CFileStatus> found;
    Files().FindFilesEx(folder / u"tree", found, u"*", FF_Recursive | FF_Hidden | FF_Files | FF_Directories);
    EXPECT_EQ(Sorted(found, folder / u"tree"), u"file filelink itself link ");
    Files().DeleteTree(folder / u"tree", true);
    EXPECT_FALSE(Files().DirectoryExists(folder / u"tree"));
    Files().DeleteTree(folder / u"link", true);
    EXPECT_FALSE(std::filesystem::is_symlink(place / "link"));
    EXPECT_EQ(folder.Content(u"outside\\kept"), "x");
    EXPECT_EQ(std::filesystem::status(place / "outside" / "kept").permissions(), std::filesystem::perms::owner_read);

    // What would be found from the current directory is not what the tree has.
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::create_directory(place / "strange");
    std::filesystem::create_directory(place / "strange" / "Z:outside");
    std::filesystem::create_directory(place / "strange" / "R.E.M.");
    folder.Write(u"strange\\R.E.M.\\file.");
    std::filesystem::current_path(place);
    EXPECT_TRUE(Raised<CFileException>([&] { Files().DeleteTree(folder / u"strange", true); })) << "it is not empty";
    std::filesystem::current_path(before);
    EXPECT_EQ(folder.Content(u"outside\\kept"), "x");
    EXPECT_FALSE(std::filesystem::exists(place / "strange" / "R.E.M."));
    EXPECT_TRUE(std::filesystem::exists(place / "strange" / "Z:outside"));
}

TEST(NativeFileSystem, FindsFiles) {
    const CTestFolder folder;
    for (const char16_t* name :
         {u"One.txt", u"two.txt", u"hidden.txt", u"sub\\three.txt", u"sub\\deep\\four.log", u"veiled\\five.txt"}) {
        folder.Write(name);
    }
    Files().SetAttributes(folder / u"hidden.txt", Hidden);
    Files().SetAttributes(folder / u"veiled", Hidden);
    constexpr std::uint32_t all = FF_Recursive | FF_Hidden | FF_Files | FF_Directories;
    for (const auto& [patterns, flags, expected] :
         {std::tuple(u"*", std::uint32_t{FF_Files}, u"One.txt two.txt "),
          {u"*", FF_Files | FF_Hidden, u"One.txt hidden.txt two.txt "},
          {u"*", FF_Directories, u"sub "},
          {u"", all, u""},
          {u";two.*;*.txt;", FF_Files, u"One.txt two.txt two.txt "},
          {u"*.log", FF_Files | FF_Recursive, u"sub\\deep\\four.log "},
          {u"*", all,
           u"One.txt hidden.txt sub sub\\deep sub\\deep\\four.log sub\\three.txt two.txt veiled "
           u"veiled\\five.txt "}}) {
        CArray<CFileStatus> found;
        Files().FindFilesEx(folder.Path(), found, patterns, flags, nullptr);
        EXPECT_EQ(Sorted(found, folder.Path()), expected) << Readable(patterns) << " " << flags;
    }

    struct CNotDeep final : IFindFilesFilter {
        bool Accept(const CUnicodeString& directory, CArray<CFileStatus>&, const CUnicodeString&) override {
            return FileSystem::GetName(directory) != u"deep";
        }
    } filter;
    CArray<CFileStatus> found;
    Files().FindFilesEx(folder.Path(), found, u"*.*", FF_Files | FF_Recursive, &filter);
    EXPECT_EQ(Sorted(found, folder.Path()), u"One.txt sub\\three.txt two.txt ");

    CArray<CUnicodeString> names;
    FileSystem::GetFileNames(folder / u"sub\\..\\", names, u"*.txt;*.*");
    ASSERT_EQ(names.Size(), 2);
    EXPECT_EQ(names[0] + names[1], u"One.txttwo.txt") << "sorted, each once";
    EXPECT_EQ(FileSystem::GetRealPath(folder / u"SUB/Deep\\FOUR.log\\missing"),
              FileSystem::GetRealPath(folder.Path()) + u"\\sub/deep\\four.log\\missing");
}

TEST(NativeFileSystem, ListsWhatLiesBehindALongPath) {
    const CTestFolder folder;
    CUnicodeString deep = folder.Path();
    for (int level = 0; level < 6; ++level) {
        deep += (u"\\" + std::u16string(50, u'l')).c_str();
        ASSERT_TRUE(Platform::CreateDirectory((u"\\\\?\\" + deep).Text(), nullptr)) << level;
    }
    ASSERT_TRUE(Platform::CreateDirectory((u"\\\\?\\" + deep + u"\\leaf").Text(), nullptr));
    CArray<CFileStatus> found;
    Files().FindFiles(deep, found, u"*");
    ASSERT_EQ(found.Size(), 1);
    EXPECT_EQ(found[0].FullName, deep + u"\\leaf");
    EXPECT_EQ(found[0].Attributes & Platform::FileAttributeDirectory, Platform::FileAttributeDirectory);
}

TEST(NativeFileSystem, TellsAndSetsStatus) {
    const CTestFolder folder;
    folder.Write(u"File.txt", "12345");
    const CUnicodeString path = folder / u"File.txt";
    CFileStatus status;
    Files().GetStatus(folder / u".\\File.txt", status);
    EXPECT_EQ(status.FullName + u'|' + status.Name, path + u"|File.txt");
    EXPECT_EQ(status.Size, 5);
    EXPECT_GT(status.LastWriteTime, 0);
    CArray<CFileStatus> found;
    Files().FindFiles(folder.Path(), found, u"*.txt");
    ASSERT_EQ(found.Size(), 1);
    EXPECT_EQ(found[0].LastWriteTime, status.LastWriteTime);
    EXPECT_EQ(found[0].Attributes, status.Attributes);
    EXPECT_EQ(found[0].Size, 5);

    constexpr std::int64_t someTime = 0x01D0'0000'0000'0000; // in 2014
    const auto set = [&](std::uint32_t before, std::uint32_t attributes, std::int64_t time) {
        Files().SetAttributes(path, before);
        CFileStatus wanted;
        wanted.Attributes = attributes;
        wanted.LastWriteTime = time;
        Files().SetStatus(path, wanted);
        Files().GetStatus(path, status);
        EXPECT_TRUE(time == 0 || status.LastWriteTime == time);
        return status.Attributes & ReadOnly;
    };
    EXPECT_EQ(set(Normal, ReadOnly, 0), 0U) << "no time, no new attributes";
    EXPECT_EQ(set(ReadOnly, Normal, 0), 0U) << "but for a read-only file";
    EXPECT_EQ(set(Normal, ReadOnly, someTime), ReadOnly);
    EXPECT_EQ(set(ReadOnly, Normal, someTime + 600'000'000), 0U);
    Files().SetAttributes(path, Normal);
    const CHeldFile held(path);
    status.Attributes = Normal;
    EXPECT_EQ(Raised<CFileException>([&] { Files().SetStatus(path, status); })->cause, 11U);
}

TEST(NativeFileSystem, FaultsOfASearchEndIt) {
    SKIP_WITHOUT_FAULTS();
    const CTestFolder folder;
    folder.Write(u"a");
    for (const auto& [function, code, raised] : {std::tuple("FindFirstFile", 18U, 0U),
                                                 {"FindFirstFile", 2U, 0U},
                                                 {"FindFirstFile", 5U, 5U},
                                                 {"FindNextFile", 2U, 0U},
                                                 {"FindNextFile", 5U, 5U},
                                                 {"FindClose", 6U, 6U},
                                                 {"ReadNext", 1117U, 1117U}}) {
        CArray<CFileStatus> found;
        Platform::ArmFault(function, 1, code, Platform::FaultMode::Once);
        const auto failure = Raised<CFileException>([&] { Files().FindFiles(folder.Path(), found, u"*"); });
        Platform::DisarmFaults();
        EXPECT_EQ(failure ? failure->lastError : 0, raised) << function << " " << code;
    }
}

TEST(NativeFileSystem, AnyFailureOfTheSystemLeavesNothingOpen) {
    SKIP_WITHOUT_FAULTS();
    const CTestFolder folder;
    folder.Write(u"f");
    const auto useEverything = [&] {
        CFile file;
        file.Open(folder / u"f", 4129);
        file.Close();
        CFileStatus status;
        Files().GetStatus(folder / u"f", status);
        Files().SetStatus(folder / u"f", status);
        CArray<CFileStatus> found;
        Files().FindFilesEx(folder.Path(), found, u"*", FF_Files);
        Files().CopyFile(folder / u"g", folder / u"f");
    };
    const auto nobodyHasItOpen = [&](std::int32_t nth) { ASSERT_TRUE(Files().CheckFile(folder / u"f", 17)) << nth; };
    EXPECT_GT(FailEachCall(
                  "*", 5, Platform::FaultMode::Once, [](std::int32_t) {}, useEverything, nobodyHasItOpen),
              15);
}

TEST(NativeFileSystem, SpecialFolders) {
    for (const TSpecialFolder folder : {SF_LocalAppData, SF_AppData, SF_CommonAppData}) {
        const CUnicodeString path = CNativeFileSystem::GetSpecialFolder(folder);
        EXPECT_EQ(FileSystem::GetPathType(path), PT_DriveAbsolute) << Readable(path.View());
        EXPECT_EQ(path, FileSystem::AddTrailingSlash(path));
    }
    EXPECT_EQ(SpecialFolders.GetItemCount(), 43);
    EXPECT_EQ(SpecialFolders.Get(SF_ProgramFilesCommon), 43);
    FileSystem::ShutdownFileSystems();
    EXPECT_TRUE(SpecialFolders.IsEmpty());
    EXPECT_TRUE(Raised<CInternalError>([] { CNativeFileSystem::GetSpecialFolder(static_cast<TSpecialFolder>(43)); }));

    CNativeFileSystem::SetApplicationFolders(u"Maker\\Program");
    EXPECT_EQ(LocalApplicationFolder, CNativeFileSystem::GetSpecialFolder(SF_LocalAppData) + u"Maker\\Program");
    EXPECT_EQ(ApplicationFolder, CNativeFileSystem::GetSpecialFolder(SF_AppData) + u"Maker\\Program");
    EXPECT_EQ(CommonApplicationFolder, CNativeFileSystem::GetSpecialFolder(SF_CommonAppData) + u"Maker\\Program");
}

TEST(NativeFileSystem, SweepsTemporaryObjects) {
    const CTestFolder folder;
    const auto fill = [&] {
        folder.Write(u"a");
        folder.Write(u"sub\\b");
        folder.Write(u"held");
        for (const char16_t* name : {u"a", u"held", u"missing"}) {
            TemporaryFiles.Set(folder / name);
        }
        TemporaryDirectories.Set(folder / u"sub\\");
        CNativeFileSystem::SetTemporaryFolder(folder.Path());
        EXPECT_EQ(TemporaryFolder, folder.Path());
    };
    if (Platform::FaultsAvailable()) {
        Platform::ArmFault("AllocateRuntimeHeap", 1, 8, Platform::FaultMode::Once);
        EXPECT_TRUE(Raised<CMemoryException>([] { TemporaryFiles.Set(u"x"); })) << "the heap that no manager replaces";
        Platform::DisarmFaults();
    }
    fill();
    SetDebugFlag(DebugKeepTempFiles, true);
    CNativeFileSystem::ReleaseTemporaryObjects();
    SetDebugFlag(DebugKeepTempFiles, false);
    EXPECT_TRUE(TemporaryFiles.IsEmpty() && TemporaryDirectories.IsEmpty() && TemporaryFolder.IsEmpty());
    EXPECT_EQ(folder.Content(u"a") + folder.Content(u"sub\\b"), "xx");

    fill();
    {
        const CHeldFile held(folder / u"held");
        CNativeFileSystem::ReleaseTemporaryObjects();
    }
    EXPECT_EQ(folder.Content(u"a") + folder.Content(u"sub\\b") + folder.Content(u"held"), "(missing)(missing)x");
    EXPECT_FALSE(Files().DirectoryExists(folder / u"sub"));
    EXPECT_TRUE(TemporaryDirectories.IsEmpty());
    EXPECT_EQ(TemporaryFiles.GetItemCount(), 2) << "what could not go stays in the set";
    EXPECT_TRUE(TemporaryFiles.Has(folder / u"HELD/"));
    TemporaryFiles.DeleteAll();
}
