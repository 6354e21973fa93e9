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

using namespace Tsx;

namespace {

constexpr std::uint32_t ReadOnly = Platform::FileAttributeReadOnly;
constexpr std::uint32_t Hidden = Platform::FileAttributeHidden;

CFileSystemBase& Files() {
    return FileSystem::GetFileSystem(u"");
}

/// The names below `folder` that a search finds, in order.
CUnicodeString Found(const CUnicodeString& folder, const char16_t* patterns, std::uint32_t flags,
                     IFindFilesFilter* filter = nullptr) {
    CArray<CFileStatus> found;
    Files().FindFilesEx(folder, found, patterns, flags, filter);
    std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.FullName < b.FullName; });
    CUnicodeString text;
    for (const CFileStatus& status : found) {
        text += status.FullName.Mid(folder.Length() + 1) + u' ';
    }
    return text;
}

/// A file of that name is open for reading, and nobody else may do anything with it.
struct CHeldFile {
    explicit CHeldFile(const CUnicodeString& path) { file.Open(path, OM_Read | OM_ShareExclusive); }
    CFile file;
};

} // namespace

TEST(NativeFileSystem, LongAndCanonicalPaths) {
    for (const auto& [path, type, canonical] :
         {std::tuple(u"C:/..\\a\\.\\b\\..\\c\\...", PT_DriveAbsolute, u"C:\\a\\c\\..."),
          {u"C:/a/..", PT_DriveAbsolute, u"C:\\"},
          {u"\\\\s\\h\\x\\..\\..", PT_UNC, u"\\\\s\\h"},
          {u"\\\\s", PT_UNC, u"\\\\s\\"}}) {
        EXPECT_EQ(CNativeFileSystem::GetCanonicalPath(path, type), canonical) << Readable(path);
    }
    EXPECT_TRUE(Raised<CInternalError>([] { CNativeFileSystem::GetCanonicalPath(u"a\\b", PT_Relative); }));
    EXPECT_TRUE(Raised<CInternalError>([] { CNativeFileSystem::GetCanonicalPath(u" ", PT_UNC); }));
    const std::u16string tail(254, u'x'); // 260 characters with six in front
    for (const auto& [start, result] : {std::pair(u"C:\\.\\y", u"C:\\.\\y"),
                                        {u"C:\\.\\yz", u"\\\\?\\C:\\yz"},
                                        {u"\\\\s\\h\\..\\", u"\\\\?\\UNC\\s\\h\\"},
                                        {u"C:.\\abc", u"C:.\\abc"}}) {
        EXPECT_EQ(CNativeFileSystem::AddLongPathPrefix((start + tail).c_str()), (result + tail).c_str());
    }
    const CTestFolder folder;
    CUnicodeString deep = folder.Path();
    for (int level = 0; level < 6; ++level) {
        deep += (u"\\" + std::u16string(50, u'l')).c_str();
        ASSERT_TRUE(Platform::CreateDirectory((u"\\\\?\\" + deep).Text(), nullptr)) << level;
    }
    EXPECT_EQ(Found(folder.Path(), u"*", FF_Directories | FF_Recursive).Right(306).View(),
              (deep.Right(305) + u' ').View());
}

TEST(NativeFileSystem, FailuresNameTheirFileAndCause) {
    const CTestFolder folder;
    const CUnicodeString file = folder.Write(u"file");
    const CUnicodeString locked = folder.Write(u"locked");
    const CUnicodeString target = folder.Write(u"guarded target");
    const CUnicodeString missing = folder / u"missing";
    const CUnicodeString nowhere = folder / u"no\\where";
    const CUnicodeString full = FileSystem::GetPath(folder.Write(u"full\\inner"));
    CFileSystemBase& files = Files();
    files.SetAttributes(target, ReadOnly);
    const CHeldFile held(locked);
    // Under Wine a super-user may write what is read-only, and then the copy just succeeds.
    const std::uint32_t guarded = Platform::CopyFile(file.Text(), target.Text(), false) ? FC_None : FC_AccessDenied;
    CArray<CFileStatus> found;
    const std::tuple<std::uint32_t, CUnicodeString, std::function<void()>> rows[] = {
        {FC_FileNotFound, missing, [&] { files.GetAttributes(missing); }},
        {FC_SharingViolation, locked, [&] { files.DeleteFile(locked); }},
        {FC_FileNotFound, missing, [&] { files.CopyFile(file, missing); }},
        {FC_BadPath, folder / u"no\\", [&] { files.CopyFile(nowhere, file); }},
        {guarded, target, [&] { files.CopyFile(target, file); }},
        {FC_FileNotFound, file, [&] { files.MoveFile(file, missing); }},
        {FC_BadPath, nowhere, [&] { files.MoveFileOnVolume(nowhere, file); }},
        {FC_AlreadyExists, target, [&] { files.RenameFile(file, target); }},
        {FC_AlreadyExists, full, [&] { files.CreateDirectory(full, true); }},
        {FC_BadPath, file + u"\\a", [&] { files.CreateDirectory(file + u"\\a", false); }},
        {FC_RemoveCurrentDirectory, full, [&] { files.RemoveDirectory(full); }},
        {FC_FileNotFound, missing, [&] { files.SetStatus(missing, {}); }},
        {FC_BadPath, nowhere, [&] { files.FindFiles(nowhere, found, u"*"); }},
        {FC_BadPath, u"1:\\", [&] { files.GetFreeSpace(u"1:/x"); }}};
    for (const auto& [cause, fileName, operation] : rows) {
        const auto failure = Raised<CFileException>(operation);
        EXPECT_EQ(failure ? failure->cause : FC_None, cause) << Readable(fileName.View());
        EXPECT_EQ(failure ? failure->fileName : fileName, fileName);
    }
    EXPECT_TRUE(Raised<CFileException>([&] { files.CreateDirectory(u"1:\\x\\y\\", false); })) << "no drive";
    EXPECT_FALSE(files.TryDeleteFile(locked) || files.CheckFile(locked, OM_Read | OM_ShareDenyNone));
}

TEST(NativeFileSystem, KnowsWhatExists) {
    const CTestFolder folder;
    folder.Write(u"sub\\file");
    for (const auto& [path, exists, isDirectory] : {std::tuple(CUnicodeString(), false, false),
                                                    {folder / u"sub\\file", true, false},
                                                    {folder / u"sub\\file\\", false, false},
                                                    {folder / u"sub", true, true},
                                                    {u" " + (folder / u"sub\\") + u" ", false, true}}) {
        EXPECT_EQ(Files().CheckFile(path, FA_Exists), exists) << Readable(path.View());
        EXPECT_EQ(Files().DirectoryExists(path), isDirectory) << Readable(path.View());
    }
    EXPECT_TRUE(Files().DirectoryExists(FileSystem::GetRoot(folder.Path())) && !Files().DirectoryExists(u"1:\\"));
    EXPECT_TRUE(Files().DirectoryExists(FileSystem::GetDrive(folder.Path())));
    const std::uint32_t mode = Platform::SetErrorMode(Platform::SemFailCriticalErrors);
    Files().CheckFile(folder / u"file", FA_Exists);
    EXPECT_EQ(Platform::SetErrorMode(mode), Platform::SemFailCriticalErrors) << "the mode is put back";
}

TEST(NativeFileSystem, CopiesAndMoves) {
    const CTestFolder folder;
    folder.Write(u"a", "from a");
    folder.Write(u"b", "from b");
    folder.Write(u"hidden", "old");
    Files().SetAttributes(folder / u"hidden", Hidden);
    Files().CopyFile(folder / u"hidden", folder / u"a");
    EXPECT_EQ(folder.Content(u"hidden"), "from a") << "the system denies it, and so the target is deleted first";
    Files().MoveFile(folder / u"b", folder / u"a");
    folder.Write(u"c", "from c");
    Files().MoveFileOnVolume(folder / u"c", folder / u"b");
    Files().RenameFile(folder / u"c", folder / u"d");
    EXPECT_EQ(folder.Content(u"d"), "from a");
    EXPECT_EQ(Found(folder.Path(), u"*", FF_Files | FF_Hidden), u"d hidden ");
    EXPECT_GT(Files().GetFreeSpace(folder.Path()), 0);
    std::uint64_t bytes = 0;
    // A volume that is no drive, where there is one. Wine takes a path that begins with a slash for a native one.
    if (Platform::GetDiskFreeSpaceEx(u"\\dev\\shm", &bytes, nullptr, nullptr)) {
        const std::int64_t found = std::int64_t{Files().GetFreeSpace(u"/dev/shm/file")} << 10;
        EXPECT_NEAR(static_cast<double>(found), static_cast<double>(bytes), static_cast<double>(bytes) / 4);
    }
}

TEST(NativeFileSystem, MakesAllLevelsAndDeletesTrees) {
    const CTestFolder folder;
    Files().CreateDirectory(folder / u"a\\b/c\\", false);
    Files().CreateDirectory(folder / u"a\\b\\c", false);
    const CUnicodeString guarded = folder.Write(u"a\\b\\c\\guarded");
    Files().SetAttributes(guarded, ReadOnly);
    Files().CreateDirectory(folder / u"a\\guarded", true);
    Files().SetAttributes(folder / u"a\\guarded", ReadOnly);
    const auto refused = Raised<CFileException>([&] { Files().DeleteTree(folder / u"a", false); });
    EXPECT_EQ(refused ? refused->fileName : u"", guarded);
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
    std::filesystem::permissions(place / "outside" / "kept", std::filesystem::perms::owner_read);
    std::filesystem::create_symlink("../outside/kept", place / "tree" / "filelink", error);
    EXPECT_EQ(Found(folder / u"tree", u"*", FF_Recursive | FF_Hidden | FF_Files | FF_Directories),
              u"file filelink itself link ");
    Files().DeleteTree(folder / u"tree", true);
    EXPECT_FALSE(Files().DirectoryExists(folder / u"tree"));
    EXPECT_EQ(std::filesystem::status(place / "outside" / "kept").permissions(), std::filesystem::perms::owner_read);

    // What would be found from the current directory is not what the tree has.
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::create_directories(place / "strange" / "Z:outside");
    std::filesystem::current_path(place);
    EXPECT_TRUE(Raised<CFileException>([&] { Files().DeleteTree(folder / u"strange", true); })) << "it is not empty";
    std::filesystem::current_path(before);
    EXPECT_EQ(folder.Content(u"outside\\kept"), "x");
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
         {std::tuple(u"*", FF_Files | FF_Hidden, u"One.txt hidden.txt two.txt "),
          {u"*", FF_Directories, u"sub "},
          {u";two.*;*.txt;", FF_Files, u"One.txt two.txt two.txt "},
          {u"*.log", FF_Files | FF_Recursive, u"sub\\deep\\four.log "},
          {u"*", all,
           u"One.txt hidden.txt sub sub\\deep sub\\deep\\four.log sub\\three.txt two.txt veiled "
           u"veiled\\five.txt "}}) {
        EXPECT_EQ(Found(folder.Path(), patterns, flags), expected) << Readable(patterns) << " " << flags;
    }
    struct CNotDeep final : IFindFilesFilter {
        bool Accept(const CUnicodeString& directory, CArray<CFileStatus>&, const CUnicodeString&) override {
            return FileSystem::GetName(directory) != u"deep";
        }
    } filter;
    EXPECT_EQ(Found(folder.Path(), u"*.*", FF_Files | FF_Recursive, &filter), u"One.txt sub\\three.txt two.txt ");
    CArray<CUnicodeString> names;
    FileSystem::GetFileNames(folder / u"sub\\..\\", names, u"*.txt;*.*");
    ASSERT_EQ(names.Size(), 2);
    EXPECT_EQ(names[0] + names[1], u"One.txttwo.txt") << "sorted, each once";
    EXPECT_EQ(FileSystem::GetRealPath(folder / u"SUB/Deep\\FOUR.log\\missing"),
              FileSystem::GetRealPath(folder.Path()) + u"\\sub/deep\\four.log\\missing");
}

TEST(NativeFileSystem, TellsAndSetsStatus) {
    const CTestFolder folder;
    const CUnicodeString path = folder.Write(u"File.txt", "12345");
    CFileStatus status;
    Files().GetStatus(folder / u".\\File.txt", status);
    EXPECT_EQ(status.FullName + u'|' + status.Name, path + u"|File.txt");
    CArray<CFileStatus> found;
    Files().FindFiles(folder.Path(), found, u"*.txt");
    EXPECT_EQ(std::tuple(found[0].LastWriteTime, found[0].Attributes, found[0].Size, std::int64_t{5}),
              std::tuple(status.LastWriteTime, status.Attributes, std::int64_t{5}, status.Size));

    constexpr std::uint32_t normal = Platform::FileAttributeNormal;
    constexpr std::int64_t someTime = 0x01D0'0000'0000'0000; // in 2014
    for (const auto& [before, wanted, time, after] : {std::tuple(normal, ReadOnly, std::int64_t{0}, 0U),
                                                      {ReadOnly, normal, 0, 0U}, // without a time, this way alone
                                                      {normal, ReadOnly, someTime, ReadOnly},
                                                      {ReadOnly, normal, someTime + 600'000'000, 0U}}) {
        Files().SetAttributes(path, before);
        status = {};
        status.Attributes = wanted;
        status.LastWriteTime = time;
        Files().SetStatus(path, status);
        Files().GetStatus(path, status);
        EXPECT_TRUE(time == 0 || status.LastWriteTime == time);
        EXPECT_EQ(status.Attributes & ReadOnly, after) << before << " " << time;
    }
}

TEST(NativeFileSystem, AnyFailureOfTheSystemLeavesNothingOpen) {
    SKIP_WITHOUT_FAULTS();
    const CTestFolder folder;
    folder.Write(u"f");
    CArray<CFileStatus> found;
    const auto useEverything = [&] {
        CFileStatus status;
        CHeldFile(folder / u"f").file.Close();
        Files().GetStatus(folder / u"f", status);
        Files().SetStatus(folder / u"f", status);
        Files().FindFilesEx(folder.Path(), found, u"*", FF_Files);
        Files().CopyFile(folder / u"g", folder / u"f");
    };
    const auto nobodyHasItOpen = [&](std::int32_t nth) { ASSERT_TRUE(Files().CheckFile(folder / u"f", 17)) << nth; };
    EXPECT_GT(FailEachCall(
                  "*", 5, Platform::FaultMode::Once, [](std::int32_t) {}, useEverything, nobodyHasItOpen),
              15);
}

TEST(NativeFileSystem, SpecialFolders) {
    const CUnicodeString path = CNativeFileSystem::GetSpecialFolder(SF_LocalAppData);
    EXPECT_TRUE(FileSystem::GetPathType(path) == PT_DriveAbsolute && path.Right(1) == u"\\") << Readable(path.View());
    // The numbers of Windows for its folders, in the order of their names.
    constexpr std::int32_t numbers[] = {48, 29, 26, 10, 47, 30, 35, 25, 46, 31, 23, 22, 24, 45, 3,
                                        33, 0,  16, 17, 6,  20, 34, 1,  32, 28, 13, 39, 19, 18, 5,
                                        4,  27, 40, 38, 43, 2,  8,  9,  11, 7,  37, 21, 36};
    EXPECT_EQ(SpecialFolders.GetItemCount(), 43);
    for (std::int32_t folder = 0; folder < 43; ++folder) {
        EXPECT_EQ(SpecialFolders.Get(folder), numbers[folder]) << folder;
    }
    CNativeFileSystem::SetApplicationFolders(u"Maker\\Program");
    EXPECT_EQ(LocalApplicationFolder, path + u"Maker\\Program");
    EXPECT_EQ(ApplicationFolder, CNativeFileSystem::GetSpecialFolder(SF_AppData) + u"Maker\\Program");
    EXPECT_EQ(CommonApplicationFolder, CNativeFileSystem::GetSpecialFolder(SF_CommonAppData) + u"Maker\\Program");
}

TEST(NativeFileSystem, SweepsTemporaryObjects) {
    const CTestFolder folder;
    for (const bool keeps : {true, false}) {
        folder.Write(u"sub\\b");
        const CHeldFile held(folder.Write(u"held"));
        for (const CUnicodeString& path : {folder.Write(u"a"), folder / u"held", folder / u"missing"}) {
            TemporaryFiles.Set(path);
        }
        TemporaryDirectories.Set(folder / u"sub\\");
        CNativeFileSystem::SetTemporaryFolder(folder.Path());
        SetDebugFlag(DebugKeepTempFiles, keeps);
        CNativeFileSystem::ReleaseTemporaryObjects();
        EXPECT_EQ(Found(folder.Path(), u"*", FF_Files | FF_Directories | FF_Recursive),
                  keeps ? u"a held sub sub\\b " : u"held ");
        EXPECT_EQ(TemporaryFiles.GetItemCount(), keeps ? 0 : 2) << "what could not go stays in the set";
        EXPECT_TRUE(TemporaryDirectories.IsEmpty() && TemporaryFolder.IsEmpty());
    }
    TemporaryFiles.DeleteAll();
}
