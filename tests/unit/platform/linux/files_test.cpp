// What files have only on this system: native paths, links, kept attributes, names that Windows refuses, other
// programs and users, failures in the middle.
#include "platform/inc/faults.h"
#include "platform/inc/shell.h"
#include "platform/linux/files/fileinfo.h"
#include "platform/linux/files/paths.h"
#include "tests/support/recordinghandler.h"
#include "tests/unit/platform/scratchfolder.h"
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
using namespace Platform;
namespace fs = std::filesystem;

static int renameFailure = -1; // or the errno of the system's own call, which a file system may lack
extern "C" int renameat2(int from, const char* name, int to, const char* newName, unsigned flags) noexcept {
    errno = renameFailure;
    return renameFailure > 0 ? -1 : static_cast<int>(syscall(SYS_renameat2, from, name, to, newName, flags));
}

TEST(Paths, MapToNativeOnes) {
    const CScratch scratch;
    const std::string root = scratch.Place();
    const std::string here = fs::current_path();
    setenv("TESSARIX_DRIVE_C", root.c_str(), 1);
    scratch.Make(u"Sub\\File.TXT");
    for (const char* name : {"R.E.M.", "back\\slash"}) {
        fs::create_directory(scratch.Place() / name);
        std::ofstream(scratch.Place() / name / "End. ") << "x";
    }
    const auto native = [](const std::u16string& path) {
        std::string mapped;
        std::string mappedInFull;
        char16_t full[1000] = {};
        EXPECT_TRUE(MapPath(path, mapped) && GetFullPathName(path.c_str(), 1000, full, nullptr) > 0) << Readable(path);
        EXPECT_TRUE(MapPath(full, mappedInFull) && mappedInFull == mapped) << mappedInFull;
        return mapped;
    };
    const auto below = [&](const std::u16string& path) { return native(path).substr(root.size()); };
    ExpectRows(below, {u"c:/sub\\\\file.txt -> /Sub/File.TXT", u"C:SUB -> /Sub", u"C:\\none\\..\\sub\\. -> /Sub",
                       u"\\\\?\\C:\\Sub\\new.txt -> /Sub/new.txt", u"C:\\Sub.\\File.TXT. . -> /Sub/File.TXT",
                       u"C:\\R.E.M.\\none. . -> /R.E.M./none", u"C:\\r.e.m.\\..\\R.E.M. -> /R.E.M.",
                       u"C:\\R.E.M.\\end.  -> /R.E.M./End. ", u"C:\\R.E.M.\\End. .  -> /R.E.M./End"});
    EXPECT_EQ(native(u"/") + native(u"Z:") + native(u"no/such\\thing"), "/" + here + here + "/no/such/thing");
    for (const std::string& current : {root + "/R.E.M.", root + "/back\\slash"}) {
        fs::current_path(current);
        EXPECT_EQ(native(u"End. ") + native(u".") + native(u"..\\sub"), current + "/End. " + current + root + "/Sub");
    }
    fs::current_path(here);
    unsetenv("TESSARIX_DRIVE_C");
    EXPECT_EQ(WindowsPath("/home/u/a.txt"), u"Z:\\home\\u\\a.txt");
}

TEST(LinuxFiles, NamesAttributesAndTimesThatWindowsLacks) {
    const CScratch scratch;
    scratch.Make(u".dot");
    EXPECT_EQ(GetFileAttributes(scratch(u".dot")), FileAttributeHidden | FileAttributeArchive);
    EXPECT_TRUE(scratch.CanOpen(u".dot", GenericWrite, 0, CreateAlways)) << "what nobody hid is not guarded";
    EXPECT_TRUE(SetFileAttributes(scratch(u".dot"), FileAttributeArchive));
    EXPECT_EQ(GetFileAttributes(scratch(u".dot")), FileAttributeArchive);
    scratch.Make(u"ab:b?\"c");
    EXPECT_TRUE(Do(scratch, u"open ab:b?\"c"));
    EXPECT_EQ(Found(scratch(u"ab:b?\"c")), "ab:b?\"c");
    EXPECT_EQ(ErrorOf([&] { return scratch.CanOpen(u"a:c", GenericRead, 0, OpenAlways); }), ErrorInvalidName);
    EXPECT_EQ(mkfifo((scratch.Place() / "fifo").c_str(), 0600), 0);
    EXPECT_TRUE(scratch.Has(u"fifo") && scratch.CanOpen(u"fifo", 0)) << "nobody is waited for";
    const Handle version = CreateFile(u"/proc/version", GenericRead, 0, nullptr, OpenExisting, 0, nullptr);
    EXPECT_TRUE(GetFileSize(version, nullptr) > 10 && CloseHandle(version)) << "generated as it is read";
    for (const char* name : {"1\\2", "1:", "1:2"}) { // a separator to every path of ours, a drive to a search's reader
        std::ofstream(scratch.Place() / name) << "x";
    }
    EXPECT_EQ(Found(scratch(u"1*")), "2");
    EXPECT_EQ(FileTimeOf(-11'644'473'601, 0), 0) << "before the first";
    EXPECT_EQ(FileTimeOf(1'000'000'000'000'000, 0), 9'223'372'036'840'000'000) << "after the last";
}

TEST(LinuxFiles, ReadOnlyComesAndGoes) {
    const CScratch scratch;
    scratch.Make(u"file");
    const fs::path native = scratch.Place() / "file";
    for (const mode_t mode : {0664U, 0646U, 0600U, 0755U}) {
        fs::permissions(native, fs::perms(mode));
        EXPECT_TRUE(SetFileAttributes(scratch(u"file"), FileAttributeReadOnly | FileAttributeHidden));
        EXPECT_EQ(fs::status(native).permissions(), fs::perms(mode & 0555U));
        EXPECT_TRUE(SetFileAttributes(scratch(u"file"), FileAttributeNormal));
        EXPECT_EQ(fs::status(native).permissions(), fs::perms(mode));
    }
}
TEST(LinuxFiles, MovesToAnotherVolumeAreOnTheDiskBeforeTheSourceGoes) {
    const CScratch scratch;
    scratch.Make(u"file", "abc");
    scratch.Make(u"again", "abcde");
    std::string other = "/dev/shm/files_test_XXXXXX";
    const bool made = mkdtemp(other.data()) != nullptr;
    const fs::path native = other + "/target";
    std::error_code crossing;
    fs::rename(scratch.Place() / "file", native, crossing);
    if (!made || crossing != std::errc::cross_device_link) {
        GTEST_SKIP() << "no second volume: /dev/shm is missing or where the other temporary files are";
    }
    const auto move = [&](const char16_t* name, std::uint32_t flags) {
        return ErrorOf([&] { return MoveFileEx(scratch(name), CPath(native.u16string()), flags); });
    };
    constexpr std::uint32_t whole = MoveFileCopyAllowed | MoveFileWriteThrough;
    EXPECT_EQ(move(u"file", 0), ErrorNotSameDevice);
    for (const char* function : {"FlushContent", "FlushFolder"}) {
        ArmFault(function, 1, ErrorIoDevice, FaultMode::Once);
        EXPECT_TRUE(!FaultsAvailable() || move(u"file", whole) == ErrorIoDevice) << function;
        DisarmFaults();
        EXPECT_TRUE(scratch.SizeOf(u"file") == 3 && !fs::exists(native)) << function;
    }
    EXPECT_EQ(move(u"again", whole), 0U);
    EXPECT_EQ(move(u"file", whole), ErrorAlreadyExists);
    EXPECT_EQ(move(u"file", whole | MoveFileReplaceExisting), 0U);
    EXPECT_TRUE(Do(scratch, u"gone file; gone again") && fs::file_size(native) == 3);
    fs::remove_all(other);
}

TEST(LinuxFiles, LinksAreWhatTheyLeadToAndGoAlone) {
    const CScratch scratch;
    scratch.Make(u"file", "abc");
    scratch.Make(u"folder\\in");
    for (const auto& [target, link] : {std::pair{"file", "link"}, {"folder", "folderlink"}, {"none", "nowhere"}}) {
        fs::create_symlink(target, scratch.Place() / link);
    }
    EXPECT_EQ(GetFileAttributes(scratch(u"folderlink")), FileAttributeDirectory | FileAttributeReparsePoint);
    const Handle file = scratch.Open(u"file", GenericRead, FileShareRead);
    EXPECT_EQ(ErrorOf([&] { return scratch.CanOpen(u"link", GenericWrite, 3); }), ErrorSharingViolation);
    CloseHandle(file);
    EXPECT_EQ(ErrorOf([&] { return scratch.CanOpen(u"nowhere", GenericWrite, 0, CreateAlways); }), ErrorFileNotFound)
        << "nothing is made where a link leads";
    EXPECT_TRUE(Do(scratch, u"bytes link 3; has folderlink\\in; protect file; delete link; delete nowhere; "
                            u"rmdir folderlink; has file; has folder\\in"))
        << "read-only is a file's own affair";
}

TEST(LinuxFiles, ALockOfAForeignProgramBindsNobody) {
    const CScratch scratch;
    scratch.Make(u"file", "abc");
    const int foreign = open((scratch.Place() / "file").c_str(), O_RDWR | O_CLOEXEC);
    for (const int type : {F_RDLCK, F_WRLCK}) {
        struct flock whole {};
        whole.l_type = static_cast<short>(type);
        EXPECT_EQ(fcntl(foreign, F_OFD_SETLK, &whole), 0);
        EXPECT_TRUE(Do(scratch, u"move file new; move new file; open file")) << type;
    }
    close(foreign);
}

TEST(LinuxFiles, PermissionsBindAUserWhoIsNotRoot) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can become another user";
    }
    const CScratch scratch;
    fs::permissions(scratch.Place(), fs::perms(0755));
    scratch.Make(u"file", "abc");
    for (const auto& [folder, mode] :
         {std::pair{u"blind", 0733U}, {u"fixed", 0755U}, {u"sticky", 01777U}, {u"closed", 0700U}}) {
        scratch.Make((folder + std::u16string(u"\\theirs")).c_str(), "abcd");
        fs::permissions(scratch.Place() / folder, fs::perms(mode));
    }
    fs::create_symlink("sticky", scratch.Place() / "link");
    const auto asUser = [](const auto& question) {
        EXPECT_EQ(setresuid(65534, 65534, 0), 0);
        std::string answer = question();
        EXPECT_EQ(setresuid(0, 0, 0), 0);
        return answer;
    };
    const auto errorOf = [&](const std::u16string& commands) {
        return asUser([&] { return std::to_string(ErrorOf([&] { return Do(scratch, commands); })); });
    };
    ExpectRows(errorOf, {u"over file blind\\mine; bytes blind\\mine 3; delete blind\\mine -> 0",
                         u"over file sticky\\mine; over file sticky\\mine; bytes sticky\\mine 3 -> 0",
                         u"over file sticky\\kept; protect sticky\\kept; hide sticky\\kept; delete sticky\\kept -> 0",
                         u"over file link\\linked; has sticky\\linked -> 0", u"over file blind\\theirs -> 5",
                         u"over file fixed\\mine -> 5", u"mkdir fixed\\mine -> 5", u"delete fixed\\theirs -> 5",
                         u"over file sticky\\theirs -> 5", u"replace sticky\\mine sticky\\theirs -> 5",
                         u"rmdir link -> 5", u"delete sticky\\theirs -> 5", u"protect sticky\\theirs -> 5",
                         u"over file closed\\mine -> 5", u"over closed\\theirs sticky\\out -> 5"});
    EXPECT_EQ(asUser([&] { return Found(scratch(u"blind\\*")); }), "5");
    EXPECT_TRUE(Do(scratch, u"gone fixed\\mine; gone closed\\mine; gone sticky\\out; bytes blind\\theirs 4; "
                            u"bytes fixed\\theirs 4; bytes sticky\\theirs 4"));
}
TEST(LinuxFiles, AFileSystemMayLackTheRenameToNewNamesAlone) {
    const CScratch scratch;
    scratch.Make(u"file", "abc");
    scratch.Make(u"folder\\in");
    renameFailure = EINVAL;
    EXPECT_TRUE(Do(scratch, u"move file new; gone file; bytes new 3; move folder other; gone folder; has other\\in"));
    renameFailure = EIO;
    EXPECT_EQ(ErrorOf([&] { return Do(scratch, u"move new newer"); }), ErrorIoDevice);
    renameFailure = -1;
    EXPECT_TRUE(Do(scratch, u"has new; gone newer"));
}

TEST(LinuxFiles, PositionsEndAtTheLargestNumber) {
    const CScratch scratch;
    scratch.Make(u"file");
    const Handle file = scratch.Open(u"file", 0, 0); // the file system's own limit counts for others
    std::int64_t position = 0;
    EXPECT_TRUE(SetFilePointerEx(file, INT64_MAX, position, FileBegin));
    for (const std::uint32_t from : {FileEnd, FileCurrent}) {
        EXPECT_EQ(ErrorOf([&] { return SetFilePointerEx(file, INT64_MAX, position, from); }), ErrorInvalidParameter);
    }
    EXPECT_TRUE(SetFilePointerEx(file, 0, position, FileCurrent) && position == INT64_MAX && CloseHandle(file));
}

TEST(LinuxFiles, OneOfManyMakesTheName) {
    const CScratch scratch;
    for (int round = 0; round < 50; ++round) {
        std::atomic<int> made = 0;
        OnThreads(2, [&](int) { made += scratch.CanOpen(u"new", GenericWrite, 7, CreateNew) ? 1 : 0; });
        ASSERT_TRUE(made == 1 && DeleteFile(scratch(u"new"))) << made;
    }
}

TEST(LinuxFiles, ACopyThatFailsLeavesNoTarget) {
    const CScratch scratch;
    scratch.Make(u"there");
    for (const char16_t* target : {u"new", u"there"}) { // from a file that opens and whose first byte cannot be read
        EXPECT_EQ(ErrorOf([&] { return CopyFile(u"/proc/self/mem", scratch(target), false); }), ErrorIoDevice);
        EXPECT_FALSE(scratch.Has(target)) << Readable(target);
    }
}

TEST(LinuxFiles, ShellFoldersFollowTheUsersSettings) {
    const CScratch scratch;
    const std::string kept = std::getenv("HOME") ? std::getenv("HOME") : "";
    setenv("HOME", scratch.Place().c_str(), 1);
    unsetenv("XDG_CONFIG_HOME");
    setenv("XDG_CACHE_HOME", "relative", 1);
    scratch.Make(u".config\\user-dirs.dirs",
                 "# XDG_MUSIC_DIR=\"/no\"\nXDG_DESKTOP_DIR=\"$HOME/My \\\"Desk\\\"\"\nXDG_PICTURES_DIR=\"/other\"\n"
                 " XDG_PICTURES_DIR=\"/pictures\"\nXDG_TEMPLATES_DIR=\"relative\"\n");
    const auto pathOf = [](const std::u16string& folder) {
        char16_t path[MaxPath] = {};
        char16_t same[MaxPath] = {};
        ItemIdList* list = nullptr;
        const std::int32_t number = std::stoi(Readable(folder));
        const bool isThere = SHGetFolderPath(nullptr, number, nullptr, 0, path) == 0;
        const bool isPlace = SHGetSpecialFolderLocation(nullptr, number, list) == 0 && SHGetPathFromIDList(list, same);
        EXPECT_EQ(Readable(isThere ? path : u""), Readable(isPlace ? same : u"")) << number;
        CoTaskMemFree(list);
        return isThere ? Readable(path) : "none";
    };
    // None for a place outside the file system, and for no number of a folder.
    ExpectRows(pathOf, {u"0 -> " + scratch(u"My \"Desk\""), u"39 -> Z:\\pictures", u"13 -> " + scratch(u"Music"),
                        u"21 -> " + scratch(u"Templates"), u"26 -> " + scratch(u".config"),
                        u"32 -> " + scratch(u".cache"), u"36 -> Z:\\usr", u"17 -> none", u"99 -> none"});
    char16_t path[MaxPath] = {};
    EXPECT_TRUE(SHGetFolderPath(nullptr, 32 | CsidlFlagCreate, nullptr, 0, path) == 0 && scratch.Has(u".cache"));
    setenv("HOME", kept.c_str(), 1);
    unsetenv("XDG_CACHE_HOME");
}
