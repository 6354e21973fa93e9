#include "mailsystem/DraftFolder.h"

#include "mailsystem/MailFailure.h"
#include "platform/linux/files/folders.h"
#include "platform/linux/files/transfer.h"
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <glib.h>
#include <new>
#include <sys/stat.h>

namespace MailSystem {

namespace {

constexpr std::chrono::days KeptCopies{30};

std::string DataFolder() {
    const char* named = std::getenv("XDG_DATA_HOME");
    if (named && *named == '/') {
        return named;
    }
    const char* home = g_get_home_dir();
    if (!home || *home != '/') {
        throw OtherFailure("there is no home folder to keep drafts in");
    }
    return std::string(home) + "/.local/share";
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

// Whether `name` is one of NewName's between these two: the user may keep other things in the folder.
bool IsOwnName(std::string_view name, std::string_view prefix, std::string_view extension) {
    if (!name.starts_with(prefix) || !name.ends_with(extension)) {
        return false;
    }
    name.remove_prefix(prefix.size());
    name.remove_suffix(extension.size());
    return name.find_first_not_of("0123456789-") == std::string_view::npos &&
           std::count(name.begin(), name.end(), '-') == 3;
}

bool IsCopy(const std::filesystem::directory_entry& entry) {
    const std::string name = entry.path().filename();
    switch (entry.symlink_status().type()) {
    case std::filesystem::file_type::directory:
        return IsOwnName(name, "", ".files") || IsOwnName(name, ".", ".spool");
    case std::filesystem::file_type::regular:
        return IsOwnName(name, "", ".copy.eml") || IsOwnName(name, ".", ".part");
    default:
        return false;
    }
}

// Fails with EEXIST when there is such a file.
bool RenameToNew(const std::string& from, const std::string& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return false;
    }
    // Some network file systems have the plain rename alone, which would replace a file. The look beforehand is enough:
    // a name holds the time, the process and a number.
    if (access(to.c_str(), F_OK) == 0) {
        errno = EEXIST;
        return false;
    }
    return std::rename(from.c_str(), to.c_str()) == 0;
}

} // namespace

void MakeFolder(const std::string& path) {
    if (!Platform::MakeFolders(path)) {
        throw StorageFailure("cannot make the folder", path, errno);
    }
}

std::string DraftFolder() {
    std::string folder = DataFolder() + "/corvane/drafts";
    MakeFolder(folder);
    return folder;
}

std::string MakeHiddenFolder(const std::string& draftFolder) {
    for (;;) {
        std::string path = draftFolder + "/." + NewName() + ".spool";
        if (mkdir(path.c_str(), FolderMode) == 0) {
            return path;
        }
        if (errno != EEXIST) {
            throw StorageFailure("cannot make a folder in", draftFolder, errno);
        }
    }
}

void RemoveFolder(const std::string& path) noexcept {
    try {
        std::error_code stays;
        std::filesystem::remove_all(path, stays);
    } catch (const std::bad_alloc&) {
        return; // remove_all raises this one whatever form it is called in
    }
}

void RemoveOldCopies(const std::string& folder) {
    const auto limit = std::filesystem::file_time_type::clock::now() - KeptCopies;
    for (const std::filesystem::directory_entry& entry : std::filesystem::directory_iterator(folder)) {
        if (IsCopy(entry) && entry.last_write_time() < limit) {
            RemoveFolder(entry.path());
        }
    }
}

DraftFile::DraftFile(const std::string& draftFolder) : folder(draftFolder) {
    do {
        name = NewName();
        temporaryPath = folder + "/." + name + ".part";
        file = Platform::Descriptor(open(temporaryPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, FileMode));
    } while (!file && errno == EEXIST);
    if (!file) {
        throw StorageFailure("cannot make a file in", folder, errno);
    }
}

DraftFile::~DraftFile() {
    if (!kept) {
        static_cast<void>(unlink(temporaryPath.c_str()));
    }
}

void DraftFile::Write(std::string_view bytes) {
    if (Platform::WriteWhole(file.Get(), bytes.data(), bytes.size()) < bytes.size()) {
        throw StorageFailure("cannot write to", folder, errno);
    }
}

std::string DraftFile::Keep() {
    if (!Platform::Flush(file.Get()) || !file.Close()) {
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
    // A name survives a power failure only when its folder is on the disk too. A failure is ignored: the draft itself
    // is there.
    static_cast<void>(Platform::FlushFolder(folder));
    return path;
}

} // namespace MailSystem
