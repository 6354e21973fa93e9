// What files have only on this system: links, kept attributes, names that Windows refuses, other processes, failures in
// the middle.
#include "platform/inc/faults.h"
#include "platform/inc/shell.h"
#include "platform/linux/files/fileinfo.h"
#include "platform/linux/text/nativetext.h"
#include "tests/unit/platform/scratchfolder.h"
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <grp.h>
#include <sstream>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace Platform;

namespace {

// -1 or the errno of the system's own call, which a file system may lack.
int renameFailure = -1;

std::string Native(std::u16string path) {
    path.erase(0, path.starts_with(u"Z:") ? 2 : 0);
    std::replace(path.begin(), path.end(), u'\\', u'/');
    return NativeName(path);
}

/// What operations leave as their errors in another process, which was there before `meanwhile` is run here: of handles
/// that are opened then it knows only what locks tell.
std::vector<std::uint32_t> ErrorsElsewhere(const std::vector<std::function<bool()>>& operations,
                                           const std::function<void()>& meanwhile) {
    int start[2] = {};
    int answers[2] = {};
    EXPECT_TRUE(pipe(start) == 0 && pipe(answers) == 0);
    const pid_t child = fork();
    if (child == 0) {
        char byte = 0;
        bool good = read(start[0], &byte, 1) == 1;
        for (const auto& operation : operations) {
            const std::uint32_t error = good ? ErrorOf(operation) : ~0U;
            good = write(answers[1], &error, sizeof(error)) == sizeof(error);
        }
        _exit(0);
    }
    meanwhile();
    EXPECT_EQ(write(start[1], "", 1), 1);
    std::vector<std::uint32_t> errors(operations.size(), ~0U);
    for (std::uint32_t& error : errors) {
        EXPECT_EQ(read(answers[0], &error, sizeof(error)), static_cast<ssize_t>(sizeof(error)));
    }
    for (const int descriptor : {start[0], start[1], answers[0], answers[1]}) {
        close(descriptor);
    }
    waitpid(child, nullptr, 0);
    return errors;
}

} // namespace

extern "C" int renameat2(int from, const char* name, int to, const char* newName, unsigned flags) noexcept {
    if (renameFailure > 0) {
        errno = renameFailure;
        return -1;
    }
    return static_cast<int>(syscall(SYS_renameat2, from, name, to, newName, flags));
}

TEST(LinuxFiles, TimesConvertOverTheirRange) {
    struct Row {
        std::int64_t seconds, nanoseconds, count;
    };
    constexpr Row rows[] = {{0, 0, 116444736000000000},
                            {0, 199, 116444736000000001},
                            {-11644473600, 0, 0},
                            {-11644473601, 0, 0},
                            {-1, 999999900, 116444735999999999},
                            {1'000'000'000'000'000, 0, 9223372036840000000}};
    for (const Row& row : rows) {
        EXPECT_EQ(FileTimeOf(row.seconds, row.nanoseconds), row.count) << row.seconds;
    }
    const timespec time = NativeTimeOf(116444735999999999);
    EXPECT_TRUE(time.tv_sec == -1 && time.tv_nsec == 999999900) << time.tv_sec << " " << time.tv_nsec;
}

TEST(LinuxFiles, ADotHidesANameUnlessSomeoneSaysOtherwise) {
    const CScratch scratch;
    scratch.Make(u".dot");
    EXPECT_EQ(GetFileAttributes(scratch(u".dot")), FileAttributeHidden | FileAttributeArchive);
    EXPECT_TRUE(scratch.CanOpen(u".dot", GenericWrite, 0, CreateAlways)) << "what nobody hid is not guarded";
    EXPECT_TRUE(SetFileAttributes(scratch(u".dot"), FileAttributeArchive));
    EXPECT_EQ(GetFileAttributes(scratch(u".dot")), FileAttributeArchive);
}

TEST(LinuxFiles, NamesThatWindowsRefusesOpenWhereTheyAre) {
    const CScratch scratch;
    std::ofstream(Native(scratch(u"ab:b?\"c"))) << "x";
    EXPECT_TRUE(scratch.CanOpen(u"ab:b?\"c", GenericRead));
    FindData data;
    EXPECT_TRUE(FindClose(FindFirstFile(scratch(u"ab:b?\"c"), data)));
    EXPECT_EQ(Readable(data.name), "ab:b?\"c");
    EXPECT_EQ(ErrorOf([&] { return scratch.CanOpen(u"a:c", GenericRead, 0, OpenAlways); }), ErrorInvalidName);
    for (const char* name : {"1\\2", "1:", "1:2"}) { // a separator to every path of ours, a drive to a search's reader
        std::ofstream(Native(scratch(u"")) + name) << "x";
        EXPECT_EQ(FindFirstFile(scratch(u"1*"), data), InvalidHandle()) << name;
        std::filesystem::remove(Native(scratch(u"")) + name);
    }
}

TEST(LinuxFiles, ReadOnlyComesAndGoesAndWhatIsNoTimeIsNone) {
    const CScratch scratch;
    scratch.Make(u"file");
    const std::string native = Native(scratch(u"file"));
    for (const mode_t mode : {0664U, 0666U, 0646U, 0600U, 0755U}) {
        ASSERT_EQ(chmod(native.c_str(), mode), 0);
        EXPECT_TRUE(SetFileAttributes(scratch(u"file"), FileAttributeReadOnly | FileAttributeHidden));
        EXPECT_EQ(static_cast<mode_t>(std::filesystem::status(native).permissions()), mode & 0555U);
        EXPECT_TRUE(SetFileAttributes(scratch(u"file"), FileAttributeNormal));
        EXPECT_EQ(static_cast<mode_t>(std::filesystem::status(native).permissions()), mode);
    }
    FileAttributeData data;
    EXPECT_TRUE(GetFileAttributesEx(scratch(u"file"), data));
    const std::int64_t created = data.creationTime;
    ASSERT_EQ(setxattr(native.c_str(), "user.tessarix.created", "-5", 2, 0), 0);
    EXPECT_TRUE(GetFileAttributesEx(scratch(u"file"), data));
    EXPECT_EQ(data.creationTime, created);
}

TEST(LinuxFiles, MovesToAnotherVolumeAreOnTheDiskBeforeTheSourceGoes) {
    const CScratch scratch;
    scratch.Make(u"file", "abc");
    std::string other = "/dev/shm/files_test_XXXXXX";
    struct stat here {};
    struct stat there {};
    if (!mkdtemp(other.data()) || stat(other.c_str(), &there) != 0 ||
        stat(Native(scratch(u"file")).c_str(), &here) != 0 || here.st_dev == there.st_dev) {
        GTEST_SKIP() << "no second volume: /dev/shm is missing or where the other temporary files are";
    }
    const std::filesystem::path native = other + "/target";
    const CPath target(native.u16string());
    constexpr std::uint32_t whole = MoveFileCopyAllowed | MoveFileWriteThrough;
    EXPECT_EQ(ErrorOf([&] { return MoveFileEx(scratch(u"file"), target, 0); }), ErrorNotSameDevice);
    for (const char* function : {"FlushContent", "FlushFolder"}) {
        if (FaultsAvailable()) {
            ArmFault(function, 1, ErrorIoDevice, FaultMode::Once);
            EXPECT_EQ(ErrorOf([&] { return MoveFileEx(scratch(u"file"), target, whole); }), ErrorIoDevice) << function;
            DisarmFaults();
            EXPECT_TRUE(scratch.SizeOf(u"file") == 3 && !std::filesystem::exists(native)) << function;
        }
    }
    scratch.Make(u"again", "abcde");
    EXPECT_TRUE(MoveFileEx(scratch(u"again"), target, whole) && !scratch.Has(u"again"));
    EXPECT_EQ(ErrorOf([&] { return MoveFileEx(scratch(u"file"), target, whole); }), ErrorAlreadyExists);
    EXPECT_TRUE(MoveFileEx(scratch(u"file"), target, whole | MoveFileReplaceExisting) && !scratch.Has(u"file"));
    EXPECT_EQ(std::filesystem::file_size(native), 3U);
    std::filesystem::remove_all(other);
}

TEST(LinuxFiles, ThePrefixTakesNamesAsTheyStand) {
    const CScratch scratch;
    const CPath folder(u"\\\\?\\" + scratch(u""));
    EXPECT_TRUE(CreateDirectory(CPath(folder + u"as it stands. "), nullptr));
    EXPECT_TRUE(std::filesystem::exists(Native(scratch(u"as it stands. "))));
    struct Row {
        std::u16string_view name;
        std::uint32_t error;
    };
    constexpr Row rows[] = {
        {u"as it stands. ", 0},     {u"as it stands", 2}, {u"as it stands. \\..\\x", 123}, {u".", 123}, {u"..", 123},
        {u"as it stands. /x", 123}, {u"none\\x", 3}};
    for (const Row& row : rows) {
        const CPath path(folder + std::u16string(row.name));
        EXPECT_EQ(ErrorOf([&] { return GetFileAttributes(path) != InvalidFileAttributes; }), row.error)
            << Readable(row.name);
    }
    EXPECT_EQ(ErrorOf([&] { return CreateDirectory(CPath(folder + std::u16string(256, u'x')), nullptr); }), 123U);
}

TEST(LinuxFiles, LinksAreWhatTheyLeadToAndGoAlone) {
    const CScratch scratch;
    scratch.Make(u"file", "abc");
    scratch.MakeFolder(u"folder");
    scratch.Make(u"folder\\in");
    EXPECT_EQ(symlink("file", Native(scratch(u"link")).c_str()), 0);
    EXPECT_EQ(symlink("folder", Native(scratch(u"folderlink")).c_str()), 0);
    EXPECT_EQ(symlink("none", Native(scratch(u"nowhere")).c_str()), 0);
    EXPECT_EQ(scratch.SizeOf(u"link"), 3);
    EXPECT_TRUE(scratch.Has(u"folderlink\\in"));
    EXPECT_TRUE((GetFileAttributes(scratch(u"folderlink")) & FileAttributeDirectory) != 0);
    EXPECT_TRUE(SetFileAttributes(scratch(u"file"), FileAttributeReadOnly));
    EXPECT_EQ(GetFileAttributes(scratch(u"link")), FileAttributeReparsePoint) << "read-only is its own affair";
    EXPECT_TRUE(SetFileAttributes(scratch(u"file"), FileAttributeNormal));
    const Handle file = scratch.Open(u"file", GenericRead, FileShareRead);
    EXPECT_EQ(ErrorOf([&] { return scratch.CanOpen(u"link", GenericWrite, 3); }), ErrorSharingViolation)
        << "one file by two names";
    CloseHandle(file);
    EXPECT_EQ(ErrorOf([&] { return scratch.CanOpen(u"nowhere", GenericWrite, 0, CreateAlways); }), ErrorFileNotFound)
        << "nothing is made where a link leads";
    EXPECT_TRUE(DeleteFile(scratch(u"link")) && DeleteFile(scratch(u"nowhere")));
    EXPECT_TRUE(RemoveDirectory(scratch(u"folderlink")));
    EXPECT_TRUE(scratch.Has(u"file") && scratch.Has(u"folder\\in"));
}

TEST(LinuxFiles, OtherProcessesShareByTheSameRules) {
    const CScratch scratch;
    scratch.Make(u"file", "abc");
    const auto rename = [&] {
        return MoveFile(scratch(u"file"), scratch(u"new")) && MoveFile(scratch(u"new"), scratch(u"file"));
    };
    const auto access = [](std::uint32_t uses) { return (uses & 1) * GenericRead | (uses >> 1) * GenericWrite; };
    for (std::uint32_t mine = 0; mine < 32; ++mine) { // FileShare bits: two of what I do, three of what I allow
        std::vector<std::function<bool()>> operations{rename};
        std::vector<std::uint32_t> expected{
            mine % 4 == 0 || (mine >> 2 & FileShareDelete) != 0 ? 0 : ErrorSharingViolation};
        for (std::uint32_t theirs = 0; theirs < 16; ++theirs) {
            operations.emplace_back([&, theirs] { return scratch.CanOpen(u"file", access(theirs % 4), theirs >> 2); });
            const bool agree = (mine % 4 & ~(theirs >> 2)) == 0 && (theirs % 4 & ~(mine >> 2)) == 0;
            expected.push_back(agree || mine % 4 == 0 || theirs % 4 == 0 ? 0 : ErrorSharingViolation);
        }
        Handle file = nullptr;
        EXPECT_EQ(ErrorsElsewhere(operations, [&] { file = scratch.Open(u"file", access(mine % 4), mine >> 2); }),
                  expected)
            << mine;
        CloseHandle(file);
    }
    for (const int type : {F_RDLCK, F_WRLCK}) { // of a program that is none of ours
        const int foreign = open(Native(scratch(u"file")).c_str(), O_RDWR | O_CLOEXEC);
        const auto lock = [&] {
            struct flock whole {};
            whole.l_type = static_cast<short>(type);
            EXPECT_EQ(fcntl(foreign, F_OFD_SETLK, &whole), 0);
        };
        EXPECT_EQ(ErrorsElsewhere({rename, [&] { return scratch.CanOpen(u"file", GenericRead | GenericWrite); }}, lock),
                  std::vector<std::uint32_t>(2));
        close(foreign);
    }
}

TEST(LinuxFiles, PermissionsBindAUserWhoIsNotRoot) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can become another user";
    }
    const CScratch scratch;
    scratch.Make(u"file", "abc");
    EXPECT_EQ(chmod(scratch.Place().c_str(), 0755), 0);
    constexpr std::pair<const char*, mode_t> folders[] = {
        {"blind", 0733}, {"fixed", 0755}, {"sticky", 01777}, {"closed", 0700}};
    for (const auto& [name, mode] : folders) {
        const std::filesystem::path folder = scratch.Place() / name;
        std::filesystem::create_directory(folder);
        std::ofstream(folder / "theirs") << "abcd";
        EXPECT_EQ(chmod((folder / "theirs").c_str(), 0644), 0);
        EXPECT_EQ(chmod(folder.c_str(), mode), 0);
    }
    EXPECT_EQ(symlink("sticky", Native(scratch(u"link")).c_str()), 0);
    const std::pair<std::u16string_view, std::uint32_t> rows[] = {
        {u"over file blind\\mine; bytes blind\\mine 3; delete blind\\mine", 0},
        {u"over file blind\\theirs", 5},
        {u"over file fixed\\mine", 5},
        {u"mkdir fixed\\mine", 5},
        {u"delete fixed\\theirs", 5},
        {u"over file sticky\\mine; over file sticky\\mine; bytes sticky\\mine 3", 0},
        {u"over file sticky\\theirs", 5},
        {u"replace sticky\\mine sticky\\theirs", 5},
        {u"delete sticky\\theirs", 5},
        {u"protect sticky\\theirs", 5},
        {u"over file link\\linked; has sticky\\linked", 0},
        {u"rmdir link", 5},
        {u"over file closed\\mine", 5},
        {u"over closed\\theirs sticky\\out", 5},
    };
    std::vector<std::function<bool()>> operations{[] { return setgroups(0, nullptr) == 0 && setuid(65534) == 0; },
                                                  [&] {
                                                      FindData data;
                                                      return FindFirstFile(scratch(u"blind\\*"), data) !=
                                                             InvalidHandle();
                                                  }};
    std::vector<std::uint32_t> expected{0, 5};
    for (const auto& [commands, error] : rows) {
        operations.emplace_back([&, text = commands] { return Do(scratch, text); });
        expected.push_back(error);
    }
    EXPECT_EQ(ErrorsElsewhere(operations, [] {}), expected) << "in the order of the rows";
    for (const auto& [name, mode] : folders) {
        EXPECT_EQ(std::filesystem::file_size(scratch.Place() / name / "theirs"), 4U) << name;
    }
    EXPECT_FALSE(scratch.Has(u"fixed\\mine") || scratch.Has(u"closed\\mine") || scratch.Has(u"sticky\\out"));
}

TEST(LinuxFiles, AFileSystemMayLackTheRenameToNewNamesAlone) {
    const CScratch scratch;
    scratch.Make(u"file", "abc");
    scratch.Make(u"folder\\in");
    renameFailure = EINVAL;
    EXPECT_TRUE(MoveFile(scratch(u"file"), scratch(u"new")) && !scratch.Has(u"file") && scratch.SizeOf(u"new") == 3);
    EXPECT_TRUE(MoveFile(scratch(u"folder"), scratch(u"other")) && !scratch.Has(u"folder") &&
                scratch.Has(u"other\\in"));
    renameFailure = EIO;
    EXPECT_EQ(ErrorOf([&] { return MoveFile(scratch(u"new"), scratch(u"newer")); }), ErrorIoDevice);
    renameFailure = -1;
    EXPECT_TRUE(scratch.Has(u"new") && !scratch.Has(u"newer"));
}

TEST(LinuxFiles, PositionsEndAtTheLargestNumber) {
    const CScratch scratch;
    scratch.Make(u"file", "abc");
    const Handle file = scratch.Open(u"file", 0, 0); // the file system's own limit counts for others
    std::int64_t position = 0;
    EXPECT_TRUE(SetFilePointerEx(file, INT64_MAX, position, FileBegin) && position == INT64_MAX);
    EXPECT_EQ(ErrorOf([&] { return SetFilePointerEx(file, INT64_MAX, position, FileEnd); }), ErrorInvalidParameter);
    EXPECT_EQ(ErrorOf([&] { return SetFilePointerEx(file, 1, position, FileCurrent); }), ErrorInvalidParameter);
    EXPECT_TRUE(SetFilePointerEx(file, 0, position, FileCurrent) && position == INT64_MAX);
    EXPECT_TRUE(CloseHandle(file));
}

TEST(LinuxFiles, WhatHasNoLengthIsReadToItsEnd) {
    const CScratch scratch;
    const std::string content(100'000, 'x'); // more than a pipe holds
    const std::string fifo = Native(scratch(u"fifo"));
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_TRUE(scratch.Has(u"fifo") && scratch.CanOpen(u"fifo", 0)) << "nobody is waited for";
    const int memory = memfd_create("memory", MFD_CLOEXEC);
    const int unlinked = open(Native(scratch(u"unlinked")).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    EXPECT_TRUE(DeleteFile(scratch(u"unlinked")));
    for (const int descriptor : {memory, unlinked}) {
        EXPECT_EQ(write(descriptor, content.data(), content.size()), static_cast<ssize_t>(content.size()));
    }
    std::ostringstream version;
    version << std::ifstream("/proc/version").rdbuf();
    const std::pair<std::string, std::string> rows[] = {{fifo, content},
                                                        {"/dev/fd/" + std::to_string(memory), content},
                                                        {"/dev/fd/" + std::to_string(unlinked), content},
                                                        {"/proc/version", version.str()},
                                                        {"/dev/null", ""}};
    std::thread writer([&] { std::ofstream(fifo) << content; });
    for (const auto& [path, expected] : rows) {
        const Handle file =
            CreateFile(CPath(path.begin(), path.end()), GenericRead, 0, nullptr, OpenExisting, 0, nullptr);
        std::string read(content.size() + 1, ' ');
        std::uint32_t count = 0;
        std::int64_t position = 0;
        EXPECT_EQ(GetFileSize(file, nullptr), expected.size()) << path;
        EXPECT_TRUE(SetFilePointerEx(file, 0, position, FileEnd)) << path;
        EXPECT_TRUE(SetFilePointerEx(file, 0, position, FileBegin)) << path;
        EXPECT_TRUE(ReadFile(file, read.data(), static_cast<std::uint32_t>(read.size()), count)) << path;
        EXPECT_TRUE(read.substr(0, count) == expected) << path;
        EXPECT_TRUE(CloseHandle(file)) << path;
    }
    writer.join();
    close(memory);
    close(unlinked);
    EXPECT_EQ(ErrorOf([] {
                  return CreateFile(u"/dev/zero", GenericRead, 0, nullptr, OpenExisting, 0, nullptr) != InvalidHandle();
              }),
              ErrorFileTooLarge);
    EXPECT_TRUE(DeleteFile(scratch(u"fifo")));
}

TEST(LinuxFiles, OneOfManyMakesTheName) {
    const CScratch scratch;
    for (int round = 0; round < 50; ++round) {
        std::atomic<int> made{0};
        std::atomic<int> opened{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&, i] {
                made += scratch.CanOpen(u"new", GenericWrite, 7, CreateNew) ? 1 : 0;
                opened += scratch.CanOpen(u"always", GenericWrite, 7, i % 2 == 0 ? OpenAlways : CreateAlways) ? 1 : 0;
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_EQ(made, 1);
        EXPECT_EQ(opened, 4);
        EXPECT_TRUE(DeleteFile(scratch(u"new")) && DeleteFile(scratch(u"always")));
    }
}

TEST(LinuxFiles, ACopyThatFailsLeavesNoTarget) {
    const CScratch scratch;
    scratch.Make(u"there");
    for (const char16_t* target : {u"new", u"there"}) {
        // A file that opens and whose first byte cannot be read.
        EXPECT_EQ(ErrorOf([&] { return CopyFile(u"/proc/self/mem", scratch(target), false); }), ErrorIoDevice);
        EXPECT_FALSE(scratch.Has(target)) << Readable(target);
    }
}

TEST(LinuxFiles, ShellFoldersFollowTheUsersSettings) {
    const CScratch scratch;
    const std::string home = Native(scratch(u""));
    const std::string kept = std::getenv("HOME") ? std::getenv("HOME") : "";
    setenv("HOME", home.c_str(), 1);
    unsetenv("XDG_CONFIG_HOME");
    setenv("XDG_CACHE_HOME", "relative", 1);
    std::filesystem::create_directory(home + ".config");
    std::ofstream(home + ".config/user-dirs.dirs")
        << "# XDG_MUSIC_DIR=\"/no\"\nXDG_DESKTOP_DIR=\"$HOME/My \\\"Desk\\\"\"\n"
           "XDG_PICTURES_DIR=\"/pictures\"\nXDG_TEMPLATES_DIR=\"relative\"\n";
    struct Row {
        std::int32_t folder;
        std::string path;
    };
    const Row rows[] = {
        {0, home + "My \"Desk\""}, {39, "/pictures"},     {13, home + "Music"}, {21, home + "Templates"},
        {26, home + ".config"},    {32, home + ".cache"}, {36, "/usr"}};
    for (const Row& row : rows) {
        char16_t path[MaxPath] = {};
        EXPECT_EQ(SHGetFolderPath(nullptr, row.folder, nullptr, 0, path), 0) << row.folder;
        EXPECT_EQ(Native(path), std::filesystem::path(row.path).lexically_normal().string()) << row.folder;
        ItemIdList* list = nullptr;
        char16_t again[MaxPath] = {};
        EXPECT_EQ(SHGetSpecialFolderLocation(nullptr, row.folder, list), 0) << row.folder;
        EXPECT_TRUE(SHGetPathFromIDList(list, again) && std::u16string_view(again) == path) << row.folder;
        CoTaskMemFree(list);
    }
    char16_t path[MaxPath] = {};
    EXPECT_EQ(SHGetFolderPath(nullptr, 32 | CsidlFlagCreate, nullptr, 0, path), 0);
    EXPECT_TRUE(std::filesystem::is_directory(home + ".cache"));
    EXPECT_LT(SHGetFolderPath(nullptr, 17, nullptr, 0, path), 0) << "a place outside the file system";
    EXPECT_LT(SHGetFolderPath(nullptr, 99, nullptr, 0, path), 0) << "no such number";
    setenv("HOME", kept.c_str(), 1);
    unsetenv("XDG_CACHE_HOME");
}
