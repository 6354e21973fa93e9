#include "platform/linux/regstore.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/folders.h"
#include "platform/linux/regfile.h"
#include "platform/linux/replacefile.h"
#include <algorithm>
#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <mutex>
#include <sys/file.h>
#include <sys/stat.h>

namespace Platform {

namespace {

constexpr mode_t LockFileMode = 0666; // less what the user's mask takes

// What the last call's failure means to someone who wants a key.
std::uint32_t RegistryCode(std::uint32_t code) {
    if (code == ErrorWriteProtect) {
        return ErrorAccessDenied;
    }
    return code == ErrorPathNotFound ? ErrorFileNotFound : code;
}
std::uint32_t CodeFromErrno() {
    return RegistryCode(WindowsErrorCode(errno));
}

// Tells one content of a file from another.
struct FileState {
    dev_t device = 0;
    ino_t number = 0;
    off_t size = 0;
    timespec modified{};
    timespec changed{};

    bool operator==(const FileState& other) const {
        const auto same = [](const timespec& a, const timespec& b) {
            return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
        };
        return device == other.device && number == other.number && size == other.size &&
               same(modified, other.modified) && same(changed, other.changed);
    }

    // So long ago that a later change gets another time, however coarse the file system's clock is.
    bool IsSettled() const { return std::time(nullptr) - changed.tv_sec > 2; }
};

// The last tree read of each root, for a program reads one setting after the other and opens the key for each.
struct Cache {
    struct Tree {
        FileState state;
        std::shared_ptr<const RegistryNode> top;
    };

    std::mutex lock;
    Tree trees[2]; // by RegistryRoot
};

// Never destroyed: settings are read as long as the process lives.
Cache& TreeCache() {
    static Cache& cache = *new Cache;
    return cache;
}

std::uint32_t OpenStore(const std::string& path, Descriptor& file, FileState& state) {
    PLATFORM_FAULT(OpenStore, GetLastError());
    file = Descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    struct stat status {};
    if (!file || fstat(file.Get(), &status) != 0) {
        return CodeFromErrno();
    }
    state = {status.st_dev, status.st_ino, status.st_size, status.st_mtim, status.st_ctim};
    return S_ISREG(status.st_mode) ? ErrorSuccess : ErrorAccessDenied;
}

std::uint32_t ReadStore(const Descriptor& file, const FileState& state, std::string& bytes) {
    PLATFORM_FAULT(ReadStore, GetLastError());
    constexpr std::size_t step = 0x10000;
    bytes.resize(static_cast<std::size_t>(state.size) + 1); // a byte more, so that the first read meets the end
    for (std::size_t filled = 0;;) {
        const ssize_t done = TEMP_FAILURE_RETRY(read(file.Get(), bytes.data() + filled, bytes.size() - filled));
        if (done <= 0) {
            bytes.resize(filled);
            return done == 0 ? ErrorSuccess : CodeFromErrno();
        }
        filled += static_cast<std::size_t>(done);
        bytes.resize(std::max(bytes.size(), filled + (filled == bytes.size() ? step : 0)));
    }
}

// Opens the file that counts; ErrorFileNotFound if no folder has one.
std::uint32_t FindStore(RegistryRoot root, Descriptor& file, FileState& state) {
    std::uint32_t result = ErrorFileNotFound;
    for (const std::string& folder : RegistryFolders(root)) {
        result = folder.empty() ? ErrorFileNotFound : OpenStore(RegistryFile(folder, root), file, state);
        if (result != ErrorFileNotFound) {
            break;
        }
    }
    return result;
}

// Adds what an open file holds to a tree.
std::uint32_t ParseStore(const Descriptor& file, const FileState& state, RegistryNode& top) {
    std::string bytes;
    const std::uint32_t result = ReadStore(file, state, bytes);
    if (result == ErrorSuccess) {
        ReadRegistryText(bytes, top);
    }
    return result;
}

std::uint32_t LockStore(const std::string& folder, Descriptor& lock) {
    PLATFORM_FAULT(LockStore, GetLastError());
    const std::string path = folder + "/registry.lock";
    lock = Descriptor(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, LockFileMode));
    const bool isLocked = lock && TEMP_FAILURE_RETRY(flock(lock.Get(), LOCK_EX)) == 0;
    return isLocked ? ErrorSuccess : CodeFromErrno();
}

} // namespace

std::uint32_t LoadRegistry(RegistryRoot root, std::shared_ptr<const RegistryNode>& top) {
    Descriptor file;
    FileState state;
    std::uint32_t result = FindStore(root, file, state);
    if (result == ErrorFileNotFound) {
        top = std::make_shared<const RegistryNode>();
        return ErrorSuccess;
    }
    if (result != ErrorSuccess) {
        return result;
    }
    Cache& cache = TreeCache();
    Cache::Tree& cached = cache.trees[static_cast<std::size_t>(root)];
    const std::lock_guard guard(cache.lock);
    if (cached.top && cached.state == state) {
        top = cached.top;
        return ErrorSuccess;
    }
    const bool isSettled = state.IsSettled(); // before the reading, for a change may come meanwhile
    auto fresh = std::make_shared<RegistryNode>();
    result = ParseStore(file, state, *fresh);
    if (result == ErrorSuccess) {
        top = fresh;
        cached = isSettled ? Cache::Tree{state, fresh} : Cache::Tree{};
    }
    return result;
}

std::uint32_t ChangeRegistry(RegistryRoot root, const std::function<std::uint32_t(RegistryNode& top)>& change) {
    const std::string folder = RegistryFolders(root).front();
    if (folder.empty()) {
        return ErrorAccessDenied;
    }
    if (!MakeFolders(folder)) {
        return RegistryCode(GetLastError());
    }
    Descriptor lock;
    std::uint32_t result = LockStore(folder, lock);
    if (result != ErrorSuccess) {
        return result;
    }
    Descriptor file;
    FileState state;
    RegistryNode top;
    result = FindStore(root, file, state);
    if (result == ErrorSuccess) {
        result = ParseStore(file, state, top);
    }
    if (result != ErrorSuccess && result != ErrorFileNotFound) {
        return result;
    }
    result = change(top);
    if (result != ErrorSuccess) {
        return result;
    }
    return ReplaceFile(RegistryFile(folder, root), WriteRegistryText(top)) ? ErrorSuccess
                                                                           : RegistryCode(GetLastError());
}

} // namespace Platform
