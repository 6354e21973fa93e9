#include "mailsystem/DraftFolder.h"

#include "mailsystem/MailFailure.h"
#include "mapi/SimpleMapi.h"
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>

namespace MailSystem {

namespace {

constexpr mode_t FolderMode = 0700;
constexpr mode_t FileMode = 0600;

std::string DataFolder() {
    const char* named = std::getenv("XDG_DATA_HOME");
    if (named && *named == '/') {
        return named;
    }
    const char* home = g_get_home_dir();
    if (!home || *home != '/') {
        throw MailFailure(Mapi::ErrorFailure, "there is no home folder to keep drafts in");
    }
    return std::string(home) + "/.local/share";
}

void MakeFolder(const std::string& path) {
    if (mkdir(path.c_str(), FolderMode) == 0 || errno == EEXIST) {
        return;
    }
    const std::size_t separator = path.find_last_of('/');
    if (errno != ENOENT || separator == 0 || separator == std::string::npos) {
        throw StorageFailure("cannot make the folder", path, errno);
    }
    MakeFolder(path.substr(0, separator));
    if (mkdir(path.c_str(), FolderMode) != 0 && errno != EEXIST) {
        throw StorageFailure("cannot make the folder", path, errno);
    }
}

// Different at each call in this process.
std::string NewName() {
    static std::atomic<unsigned> count{0};
    const std::time_t now = std::time(nullptr);
    struct tm local {};
    localtime_r(&now, &local);
    std::array<char, 32> time{};
    std::strftime(time.data(), time.size(), "%Y%m%d-%H%M%S", &local);
    return std::string(time.data()) + "-" + std::to_string(getpid()) + "-" + std::to_string(++count);
}

// Fails with EEXIST when there is such a file.
bool RenameToNew(const std::string& from, const std::string& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return false;
    }
    // Some network file systems know the plain rename alone. Names are different enough for a look beforehand.
    if (access(to.c_str(), F_OK) == 0) {
        errno = EEXIST;
        return false;
    }
    return std::rename(from.c_str(), to.c_str()) == 0;
}

// A name lasts through a power failure only when its folder is on the disk too. Not every file system can do that, and
// the draft is there without it.
void FlushFolder(const std::string& folder) {
    const Descriptor listing(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (listing.IsOpen()) {
        static_cast<void>(fsync(listing.Get()));
    }
}

} // namespace

std::string DraftFolder() {
    std::string folder = DataFolder() + "/corvane/drafts";
    MakeFolder(folder);
    return folder;
}

DraftFile::DraftFile(const std::string& draftFolder) : folder(draftFolder), file(-1) {
    do {
        name = NewName();
        temporaryPath = folder + "/." + name + ".part";
        file = Descriptor(open(temporaryPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, FileMode));
    } while (!file.IsOpen() && errno == EEXIST);
    if (!file.IsOpen()) {
        throw StorageFailure("cannot make a file in", folder, errno);
    }
}

DraftFile::~DraftFile() {
    if (!kept) {
        static_cast<void>(unlink(temporaryPath.c_str()));
    }
}

void DraftFile::Write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(file.Get(), bytes.data(), bytes.size());
        if (count >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            throw StorageFailure("cannot write to", folder, errno);
        }
    }
}

std::string DraftFile::Keep() {
    if (fsync(file.Get()) != 0 || !file.Close()) {
        throw StorageFailure("cannot write to", folder, errno);
    }
    std::string path = folder + "/" + name + ".eml";
    while (!RenameToNew(temporaryPath, path)) {
        if (errno != EEXIST) {
            throw StorageFailure("cannot name the draft", path, errno);
        }
        path = folder + "/" + NewName() + ".eml";
    }
    kept = true;
    FlushFolder(folder);
    return path;
}

} // namespace MailSystem
