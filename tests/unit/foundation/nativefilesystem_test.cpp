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

class NativeFiles : public testing::Test {
protected:
    const CTestFolder folder;
    CFileSystemBase& files = FileSystem::GetFileSystem(u"");

    /// The names below `place` that a search finds, in order.
    CUnicodeString Found(const CUnicodeString& place, const char16_t* patterns, std::uint32_t flags,
                         IFindFilesFilter* filter = nullptr) {
        CArray<CFileStatus> found;
        files.FindFilesEx(place, found, patterns, flags, filter);
        std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.FullName < b.FullName; });
        CUnicodeString text;
        for (const CFileStatus& status : found) {
            text += status.FullName.Mid(place.Length() + 1) + u' ';
        }
        return text;
    }
};

/// A file of that name is open for reading, and nobody else may do anything with it.
struct CHeldFile {
    explicit CHeldFile(const CUnicodeString& path) { file.Open(path, OM_Read | OM_ShareExclusive); }
    CFile file;
};

} // namespace

TEST_F(NativeFiles, LongPaths) {
    const std::u16string tail(254, u'x'); // 260 characters with six in front
    for (const auto& [start, result] : {std::pair(u"C:\\.\\y", u"C:\\.\\y"),
                                        {u"C:\\.\\yz", u"\\\\?\\C:\\yz"},
                                        {u"C:/..\\a/b\\..\\", u"\\\\?\\C:\\a\\"},
                                        {u"\\\\s\\h\\..\\", u"\\\\?\\UNC\\s\\h\\"},
                                        {u"C:.\\abc", u"C:.\\abc"}}) {
        EXPECT_EQ(CNativeFileSystem::AddLongPathPrefix((start + tail).c_str()), (result + tail).c_str());
    }
    CUnicodeString deep = folder.Path();
    for (int level = 0; level < 6; ++level) {
        deep += (u"\\" + std::u16string(50, u'l')).c_str();
        ASSERT_TRUE(Platform::CreateDirectory((u"\\\\?\\" + deep).Text(), nullptr)) << level;
    }
    EXPECT_EQ(Found(folder.Path(), u"*", FF_Directories | FF_Recursive).Right(306).View(),
              (deep.Right(305) + u' ').View());
}

TEST_F(NativeFiles, FailuresNameTheirFileAndCause) {
    const CUnicodeString file = folder.Write(u"file");
    const CUnicodeString missing = folder / u"missing";
    const CHeldFile held(folder.Write(u"locked"));
    folder.Write(u"full\\inner");
    files.SetAttributes(folder.Write(u"guarded"), ReadOnly);
    // Under Wine a super-user may write what is read-only, and then the copy just succeeds.
    const bool mayWrite = Platform::CopyFile(file.Text(), (folder / u"guarded").Text(), false);
    CArray<CFileStatus> found;
    const std::tuple<std::uint32_t, const char16_t*, std::function<void()>> rows[] = {
        {FC_FileNotFound, u"missing", [&] { files.GetAttributes(missing); }},
        {FC_SharingViolation, u"locked", [&] { files.DeleteFile(folder / u"locked"); }},
        {FC_FileNotFound, u"missing", [&] { files.CopyFile(file, missing); }},
        {FC_BadPath, u"no\\", [&] { files.CopyFile(folder / u"no\\where", file); }},
        {mayWrite ? FC_None : FC_AccessDenied, u"guarded", [&] { files.CopyFile(folder / u"guarded", file); }},
        {FC_FileNotFound, u"file", [&] { files.MoveFile(file, missing); }},
        {FC_BadPath, u"no\\where", [&] { files.MoveFileOnVolume(folder / u"no\\where", file); }},
        {FC_AlreadyExists, u"guarded", [&] { files.RenameFile(file, folder / u"guarded"); }},
        {FC_AlreadyExists, u"full", [&] { files.CreateDirectory(folder / u"full", true); }},
        {FC_BadPath, u"file\\a", [&] { files.CreateDirectory(folder / u"file\\a", false); }},
        {FC_RemoveCurrentDirectory, u"full", [&] { files.RemoveDirectory(folder / u"full"); }},
        {FC_FileNotFound, u"missing", [&] { files.SetStatus(missing, {}); }},
        {FC_BadPath, u"no\\where", [&] { files.FindFiles(folder / u"no\\where", found, u"*"); }}};
    for (const auto& [cause, name, operation] : rows) {
        const auto failure = Raised<CFileException>(operation);
        EXPECT_EQ(failure ? failure->cause : FC_None, cause) << Readable(name);
        EXPECT_EQ(failure ? failure->fileName : folder / name, folder / name);
    }
    EXPECT_TRUE(Raised<CFileException>([&] { files.CreateDirectory(u"1:\\x\\y\\", false); })) << "no drive";
    EXPECT_FALSE(files.TryDeleteFile(folder / u"locked") ||
                 files.CheckFile(folder / u"locked", OM_Read | OM_ShareDenyNone));
}

TEST_F(NativeFiles, KnowsWhatExists) {
    folder.Write(u"sub\\file");
    for (const auto& [path, exists, isDirectory] : {std::tuple(CUnicodeString(), false, false),
                                                    {folder / u"sub\\file", true, false},
                                                    {folder / u"sub\\file\\", false, false},
                                                    {folder / u"sub", true, true},
                                                    {u" " + (folder / u"sub\\") + u" ", false, true}}) {
        EXPECT_EQ(files.CheckFile(path, FA_Exists), exists) << Readable(path.View());
        EXPECT_EQ(files.DirectoryExists(path), isDirectory) << Readable(path.View());
    }
    EXPECT_TRUE(files.DirectoryExists(FileSystem::GetRoot(folder.Path())) && !files.DirectoryExists(u"1:\\"));
    EXPECT_TRUE(files.DirectoryExists(FileSystem::GetDrive(folder.Path())));
    const std::uint32_t mode = Platform::SetErrorMode(Platform::SemFailCriticalErrors);
    files.CheckFile(folder / u"file", FA_Exists);
    EXPECT_EQ(Platform::SetErrorMode(mode), Platform::SemFailCriticalErrors) << "the mode is put back";
}

TEST_F(NativeFiles, CopiesAndMoves) {
    folder.Write(u"a", "from a");
    folder.Write(u"b", "from b");
    folder.Write(u"hidden", "old");
    files.SetAttributes(folder / u"hidden", Hidden);
    files.CopyFile(folder / u"hidden", folder / u"a");
    EXPECT_EQ(folder.Content(u"hidden"), "from a") << "the system denies it, and so the target is deleted first";
    files.MoveFile(folder / u"b", folder / u"a");
    folder.Write(u"c", "from c");
    files.MoveFileOnVolume(folder / u"c", folder / u"b");
    files.RenameFile(folder / u"c", folder / u"d");
    EXPECT_EQ(folder.Content(u"d"), "from a");
    EXPECT_EQ(Found(folder.Path(), u"*", FF_Files | FF_Hidden), u"d hidden ");
    EXPECT_GT(files.GetFreeSpace(folder.Path()), 0);
    std::uint64_t bytes = 0;
    // A volume that is no drive, where there is one. Wine takes a path that begins with a slash for a native one.
    if (Platform::GetDiskFreeSpaceEx(u"\\dev\\shm", &bytes, nullptr, nullptr)) {
        const std::int64_t found = std::int64_t{files.GetFreeSpace(u"/dev/shm/file")} << 10;
        EXPECT_NEAR(static_cast<double>(found), static_cast<double>(bytes), static_cast<double>(bytes) / 4);
    }
}

TEST_F(NativeFiles, MakesAllLevelsAndDeletesTrees) {
    files.CreateDirectory(folder / u"a\\b/c\\", false);
    files.CreateDirectory(folder / u"a\\b\\c", false);
    const CUnicodeString guarded = folder.Write(u"a\\b\\c\\guarded");
    files.SetAttributes(guarded, ReadOnly);
    files.CreateDirectory(folder / u"a\\guarded", true);
    files.SetAttributes(folder / u"a\\guarded", ReadOnly);
    const auto refused = Raised<CFileException>([&] { files.DeleteTree(folder / u"a", false); });
    EXPECT_EQ(refused ? refused->fileName : u"", guarded);
    files.DeleteTree(folder / u"a", true);
    EXPECT_FALSE(files.CheckFile(folder / u"a", FA_Exists));
}

TEST_F(NativeFiles, LinksAndNamesThatNoPathSaysLeadNowhere) {
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
    files.DeleteTree(folder / u"tree", true);
    EXPECT_FALSE(files.DirectoryExists(folder / u"tree"));
    EXPECT_EQ(std::filesystem::status(place / "outside" / "kept").permissions(), std::filesystem::perms::owner_read);

    // What would be found from the current directory is not what the tree has.
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::create_directories(place / "strange" / "Z:outside");
    std::filesystem::current_path(place);
    EXPECT_TRUE(Raised<CFileException>([&] { files.DeleteTree(folder / u"strange", true); })) << "it is not empty";
    std::filesystem::current_path(before);
    EXPECT_EQ(folder.Content(u"outside\\kept"), "x");
}

TEST_F(NativeFiles, FindsFiles) {
    for (const char16_t* name :
         {u"One.txt", u"two.txt", u"hidden.txt", u"sub\\three.txt", u"sub\\deep\\four.log", u"veiled\\five.txt"}) {
        folder.Write(name);
    }
    files.SetAttributes(folder / u"hidden.txt", Hidden);
    files.SetAttributes(folder / u"veiled", Hidden);
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

TEST_F(NativeFiles, TellsAndSetsStatus) {
    const CUnicodeString path = folder.Write(u"File.txt", "12345");
    CFileStatus status;
    files.GetStatus(folder / u".\\File.txt", status);
    EXPECT_TRUE(status.FullName == path && status.Name == u"File.txt" && status.Size == 5);
    CArray<CFileStatus> found;
    files.FindFiles(folder.Path(), found, u"*.txt");
    EXPECT_TRUE(found[0].LastWriteTime == status.LastWriteTime && found[0].Size == 5);
    constexpr std::uint32_t normal = Platform::FileAttributeNormal;
    constexpr std::int64_t someTime = 0x01D0'0000'0000'0000; // in 2014
    for (const auto& [before, wanted, time, after] : {std::tuple(normal, ReadOnly, std::int64_t{0}, 0U),
                                                      {ReadOnly, normal, 0, 0U}, // without a time, this way alone
                                                      {normal, ReadOnly, someTime, ReadOnly},
                                                      {ReadOnly, normal, someTime + 600'000'000, 0U}}) {
        files.SetAttributes(path, before);
        status = {};
        status.Attributes = wanted;
        status.LastWriteTime = time;
        files.SetStatus(path, status);
        files.GetStatus(path, status);
        EXPECT_TRUE(time == 0 || status.LastWriteTime == time);
        EXPECT_EQ(status.Attributes & ReadOnly, after) << before << " " << time;
    }
}

TEST_F(NativeFiles, AnyFailureOfTheSystemLeavesNothingOpen) {
    SKIP_WITHOUT_FAULTS();
    folder.Write(u"f");
    CArray<CFileStatus> found;
    const auto useEverything = [&] {
        CFileStatus status;
        CHeldFile(folder / u"f").file.Close();
        files.GetStatus(folder / u"f", status);
        files.SetStatus(folder / u"f", status);
        files.FindFilesEx(folder.Path(), found, u"*", FF_Files);
        files.CopyFile(folder / u"g", folder / u"f");
    };
    const auto nobodyHasItOpen = [&](std::int32_t nth) { ASSERT_TRUE(files.CheckFile(folder / u"f", 17)) << nth; };
    const auto prepareNothing = [](std::int32_t) {};
    EXPECT_GT(FailEachCall("*", 5, Platform::FaultMode::Once, prepareNothing, useEverything, nobodyHasItOpen), 15);
}

TEST_F(NativeFiles, SpecialFolders) {
    const CUnicodeString path = CNativeFileSystem::GetSpecialFolder(SF_LocalAppData);
    EXPECT_TRUE(FileSystem::GetPathType(path) == PT_DriveAbsolute && path.Right(1) == u"\\") << Readable(path.View());
    // The numbers of Windows for its folders, in the order of their names.
    constexpr std::int32_t numbers[] = {48, 29, 26, 10, 47, 30, 35, 25, 46, 31, 23, 22, 24, 45, 3,
                                        33, 0,  16, 17, 6,  20, 34, 1,  32, 28, 13, 39, 19, 18, 5,
                                        4,  27, 40, 38, 43, 2,  8,  9,  11, 7,  37, 21, 36};
    EXPECT_EQ(SpecialFolders.GetItemCount(), 43);
    for (std::int32_t name = 0; name < 43; ++name) {
        EXPECT_EQ(SpecialFolders.Get(name), numbers[name]) << name;
    }
    CNativeFileSystem::SetApplicationFolders(u"Maker\\Program");
    EXPECT_EQ(LocalApplicationFolder, path + u"Maker\\Program");
    EXPECT_EQ(ApplicationFolder, CNativeFileSystem::GetSpecialFolder(SF_AppData) + u"Maker\\Program");
    EXPECT_EQ(CommonApplicationFolder, CNativeFileSystem::GetSpecialFolder(SF_CommonAppData) + u"Maker\\Program");
}

TEST_F(NativeFiles, SweepsTemporaryObjects) {
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
