#include "platform/linux/registry/regstore.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/files/folders.h"
#include "platform/linux/files/replacefile.h"
#include "platform/linux/registry/regfile.h"
#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <mutex>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

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

// The last tree of each root, for a program reads one setting after the other and opens the key for each: a start with
// settings in a file takes two thirds more instructions without.
struct Cache {
    struct Tree {
        std::vector<std::string> files; // what it was made of
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

std::uint32_t OpenStore(const std::string& path, Descriptor& file) {
    PLATFORM_FAULT(OpenStore, GetLastError());
    file = Descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    struct stat status {};
    if (!file || fstat(file.Get(), &status) != 0) {
        return CodeFromErrno();
    }
    return S_ISREG(status.st_mode) ? ErrorSuccess : ErrorAccessDenied;
}

// An empty file where there is none.
std::uint32_t ReadStore(const std::string& path, std::string& bytes) {
    Descriptor file;
    const std::uint32_t result = OpenStore(path, file);
    if (result != ErrorSuccess) {
        return result == ErrorFileNotFound ? ErrorSuccess : result;
    }
    PLATFORM_FAULT(ReadStore, GetLastError());
    // A page, for a start that reads settings would fault in every further one of its stack.
    std::array<char, 0x1000> piece;
    for (;;) {
        const auto count = Retry([&] { return read(file.Get(), piece.data(), piece.size()); });
        if (count <= 0) {
            return count == 0 ? ErrorSuccess : CodeFromErrno();
        }
        bytes.append(piece.data(), static_cast<std::size_t>(count));
    }
}

std::uint32_t LockStore(const std::string& folder, Descriptor& lock) {
    PLATFORM_FAULT(LockStore, GetLastError());
    const std::string path = folder + "/registry.lock";
    lock = Descriptor(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, LockFileMode));
    if (!lock && errno == ELOOP) {
        return ErrorAccessDenied; // a link in its place
    }
    const bool isLocked = lock && Retry([&] { return flock(lock.Get(), LOCK_EX); }) == 0;
    return isLocked ? ErrorSuccess : CodeFromErrno();
}

} // namespace

std::uint32_t LoadRegistry(RegistryRoot root, std::shared_ptr<const RegistryNode>& top) {
    std::vector<std::string> files;
    for (const std::string& folder : RegistryFolders(root)) {
        std::string bytes;
        const std::uint32_t result = folder.empty() ? ErrorSuccess : ReadStore(RegistryFile(folder, root), bytes);
        if (result != ErrorSuccess) {
            return result;
        }
        files.push_back(std::move(bytes));
    }
    std::reverse(files.begin(), files.end()); // the one that lies under all others first
    Cache& cache = TreeCache();
    const std::lock_guard guard(cache.lock);
    Cache::Tree& cached = cache.trees[static_cast<std::size_t>(root)];
    if (!cached.top || cached.files != files) {
        const auto read = std::make_shared<RegistryNode>();
        for (const std::string& bytes : files) {
            ReadRegistryText(bytes, *read);
        }
        cached = {std::move(files), read};
    }
    top = cached.top;
    return ErrorSuccess;
}

std::uint32_t ChangeRegistry(RegistryRoot root, const RegistryChange& change) {
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
    const std::string path = RegistryFile(folder, root);
    std::string bytes;
    result = ReadStore(path, bytes);
    if (result != ErrorSuccess) {
        return result;
    }
    std::shared_ptr<const RegistryNode> top;
    result = LoadRegistry(root, top);
    if (result != ErrorSuccess) {
        return result;
    }
    result = change(*top, bytes);
    if (result != ErrorSuccess) {
        return result;
    }
    return ReplaceFile(path, bytes) ? ErrorSuccess : RegistryCode(GetLastError());
}

} // namespace Platform
