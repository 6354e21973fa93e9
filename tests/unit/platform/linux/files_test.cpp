// What files have only on this system: links, kept attributes, names that Windows refuses, other processes, failures in
// the middle.
#include "platform/inc/faults.h"
#include "platform/inc/shell.h"
#include "platform/linux/files/fileinfo.h"
#include "platform/linux/text/nativetext.h"
#include "tests/unit/platform/scratchfolder.h"
#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <grp.h>
#include <sstream>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace Platform;

namespace {

std::string Native(std::u16string path) {
    std::replace(path.begin(), path.end(), u'\\', u'/');
    return NativeName(path);
}

// A process that was there before this one opened anything, so that it knows of our handles only what locks tell.
class OtherProcess {
public:
    explicit OtherProcess(const CScratch& scratch) {
        EXPECT_EQ(pipe(orders), 0);
        EXPECT_EQ(pipe(answers), 0);
        child = fork();
        if (child == 0) {
            close(orders[1]);
            for (Order order{}; read(orders[0], &order, sizeof(order)) == sizeof(order);) {
                const std::uint32_t error = ErrorOf([&] { return Obey(scratch, order); });
                static_cast<void>(!write(answers[1], &error, sizeof(error)));
            }
            _exit(0);
        }
    }
    ~OtherProcess() {
        for (const int descriptor : {orders[0], orders[1], answers[0], answers[1]}) {
            close(descriptor);
        }
        waitpid(child, nullptr, 0);
    }
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;

    std::uint32_t Open(std::uint32_t access, std::uint32_t share) const { return Tell({access, share}); }
    std::uint32_t Rename() const { return Tell({0, 0}); }

private:
    struct Order {
        std::uint32_t access; // 0: rename there and back
        std::uint32_t share;
    };
    static bool Obey(const CScratch& scratch, const Order& order) {
        return order.access != 0
                   ? scratch.CanOpen(u"file", order.access, order.share)
                   : MoveFile(scratch(u"file"), scratch(u"new")) && MoveFile(scratch(u"new"), scratch(u"file"));
    }
    std::uint32_t Tell(const Order& order) const {
        std::uint32_t error = ~0U;
        EXPECT_EQ(write(orders[1], &order, sizeof(order)), static_cast<ssize_t>(sizeof(order)));
        EXPECT_EQ(read(answers[0], &error, sizeof(error)), static_cast<ssize_t>(sizeof(error)));
        return error;
    }

    int orders[2] = {};
    int answers[2] = {};
    pid_t child = 0;
};

} // namespace

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
    CPath folder(u"\\\\?\\Z:" + scratch(u""));
    std::replace(folder.begin(), folder.end(), u'/', u'\\');
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
    OtherProcess other(scratch);
    constexpr std::uint32_t accesses[] = {GenericRead, GenericWrite, GenericRead | GenericWrite};
    const auto uses = [](std::uint32_t access) { return access >> 31 | (access >> 29 & 2); };
    for (const std::uint32_t mine : accesses) {
        for (std::uint32_t share = 0; share < 8; ++share) {
            const Handle file = scratch.Open(u"file", mine, share);
            for (const std::uint32_t theirs : accesses) {
                for (std::uint32_t theirShare = 0; theirShare < 4; ++theirShare) {
                    const bool agree = (uses(mine) & ~theirShare) == 0 && (uses(theirs) & ~share) == 0;
                    EXPECT_EQ(other.Open(theirs, theirShare), agree ? 0 : ErrorSharingViolation)
                        << mine << "/" << share << " " << theirs << "/" << theirShare;
                }
            }
            EXPECT_EQ(other.Rename(), (share & FileShareDelete) != 0 ? 0 : ErrorSharingViolation) << share;
            CloseHandle(file);
        }
    }
}

TEST(LinuxFiles, PermissionsBindAUserWhoIsNotRoot) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can become another user";
    }
    const CScratch scratch;
    scratch.Make(u"file", "abc");
    struct Folder {
        const char16_t* name;
        mode_t mode;
    };
    constexpr Folder folders[] = {{u"blind", 0733}, {u"fixed", 0755}, {u"sticky", 01777}, {u"closed", 0700}};
    for (const Folder& folder : folders) {
        scratch.MakeFolder(folder.name);
        const std::string native = Native(scratch(folder.name));
        std::ofstream(native + "/theirs") << "abcd";
        EXPECT_EQ(chmod((native + "/theirs").c_str(), 0644), 0);
        EXPECT_EQ(chmod(native.c_str(), folder.mode), 0);
    }
    EXPECT_EQ(symlink("sticky", Native(scratch(u"link")).c_str()), 0);
    struct Row {
        const char* name;
        bool (*operation)(const CScratch&);
        std::uint32_t error;
    };
    static constexpr auto copy = [](const CScratch& s, std::u16string_view target) {
        return CopyFile(s(u"file"), s(target), false) && s.SizeOf(target) == 3;
    };
    // clang-format off
    constexpr Row rows[] = {
        {"into blind", [](const CScratch& s) { return copy(s, u"blind\\mine") && DeleteFile(s(u"blind\\mine")); }, 0},
        {"over theirs in blind", [](const CScratch& s) { return copy(s, u"blind\\theirs"); }, 5},
        {"list blind", [](const CScratch& s) { FindData data;
            return FindFirstFile(s(u"blind\\*"), data) != InvalidHandle(); }, 5},
        {"into fixed", [](const CScratch& s) { return copy(s, u"fixed\\mine"); }, 5},
        {"folder in fixed", [](const CScratch& s) { return CreateDirectory(s(u"fixed\\mine"), nullptr); }, 5},
        {"delete in fixed", [](const CScratch& s) { return DeleteFile(s(u"fixed\\theirs")); }, 5},
        {"into sticky", [](const CScratch& s) { return copy(s, u"sticky\\mine") && copy(s, u"sticky\\mine"); }, 0},
        {"over theirs in sticky", [](const CScratch& s) { return copy(s, u"sticky\\theirs"); }, 5},
        {"move over theirs in sticky", [](const CScratch& s) { return MoveFileEx(s(u"sticky\\mine"),
            s(u"sticky\\theirs"), MoveFileReplaceExisting | MoveFileCopyAllowed); }, 5},
        {"delete theirs in sticky", [](const CScratch& s) { return DeleteFile(s(u"sticky\\theirs")); }, 5},
        {"read-only for theirs", [](const CScratch& s) { return SetFileAttributes(s(u"sticky\\theirs"),
            FileAttributeReadOnly); }, 5},
        {"through a link", [](const CScratch& s) { return copy(s, u"link\\linked") && s.Has(u"sticky\\linked"); }, 0},
        {"remove the link", [](const CScratch& s) { return RemoveDirectory(s(u"link")); }, 5},
        {"into closed", [](const CScratch& s) { return copy(s, u"closed\\mine"); }, 5},
        {"out of closed", [](const CScratch& s) { return CopyFile(s(u"closed\\theirs"), s(u"sticky\\out"), false); }, 5},
    };
    // clang-format on
    std::uint32_t errors[std::size(rows)] = {};
    int answers[2] = {};
    ASSERT_EQ(pipe(answers), 0);
    const pid_t child = fork();
    if (child == 0) {
        constexpr uid_t nobody = 65534;
        const bool bound = setgroups(0, nullptr) == 0 && setuid(nobody) == 0;
        std::transform(std::begin(rows), std::end(rows), errors,
                       [&](const Row& row) { return bound ? ErrorOf([&] { return row.operation(scratch); }) : ~0U; });
        _exit(write(answers[1], errors, sizeof(errors)) == sizeof(errors) ? 0 : 1);
    }
    EXPECT_EQ(read(answers[0], errors, sizeof(errors)), static_cast<ssize_t>(sizeof(errors)));
    waitpid(child, nullptr, 0);
    close(answers[0]);
    close(answers[1]);
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        EXPECT_EQ(errors[i], rows[i].error) << rows[i].name;
    }
    for (const Folder& folder : folders) {
        EXPECT_EQ(scratch.SizeOf(std::u16string(folder.name) + u"\\theirs"), 4) << Readable(folder.name);
    }
    EXPECT_FALSE(scratch.Has(u"fixed\\mine") || scratch.Has(u"closed\\mine") || scratch.Has(u"sticky\\out"));
}

TEST(LinuxFiles, ALockOfAnotherProgramIsNotOurs) {
    const CScratch scratch;
    scratch.Make(u"file");
    const OtherProcess other(scratch);
    for (const int type : {F_RDLCK, F_WRLCK}) {
        const int foreign = open(Native(scratch(u"file")).c_str(), O_RDWR | O_CLOEXEC);
        struct flock whole {};
        whole.l_type = static_cast<short>(type);
        EXPECT_EQ(fcntl(foreign, F_OFD_SETLK, &whole), 0);
        EXPECT_TRUE(scratch.CanOpen(u"file", GenericRead | GenericWrite)) << GetLastError();
        EXPECT_EQ(other.Rename(), 0U);
        close(foreign);
    }
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
        EXPECT_EQ(Native(path), "Z:" + std::filesystem::path(row.path).lexically_normal().string()) << row.folder;
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
