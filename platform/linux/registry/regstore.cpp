#include "platform/linux/registry/regstore.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/files/folders.h"
#include "platform/linux/files/replacefile.h"
#include "platform/linux/registry/regfile.h"
#include <algorithm>
#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <mutex>
#include <sys/file.h>
#include <sys/stat.h>
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

// A file of a root, open.
struct Layer {
    Descriptor file;
    FileState state;
};

// The last tree read of each root, for a program reads one setting after the other and opens the key for each.
struct Cache {
    struct Tree {
        std::vector<FileState> states; // of the layers
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

std::uint32_t OpenStore(const std::string& path, Layer& layer) {
    PLATFORM_FAULT(OpenStore, GetLastError());
    layer.file = Descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    struct stat status {};
    if (!layer.file || fstat(layer.file.Get(), &status) != 0) {
        return CodeFromErrno();
    }
    layer.state = {status.st_dev, status.st_ino, status.st_size, status.st_mtim, status.st_ctim};
    return S_ISREG(status.st_mode) ? ErrorSuccess : ErrorAccessDenied;
}

std::uint32_t ReadStore(const Layer& layer, std::string& bytes) {
    PLATFORM_FAULT(ReadStore, GetLastError());
    constexpr std::size_t step = 0x10000;
    bytes.resize(static_cast<std::size_t>(layer.state.size) + 1); // a byte more, so that the first read meets the end
    for (std::size_t filled = 0;;) {
        const auto done = Retry([&] { return read(layer.file.Get(), bytes.data() + filled, bytes.size() - filled); });
        if (done <= 0) {
            bytes.resize(filled);
            return done == 0 ? ErrorSuccess : CodeFromErrno();
        }
        filled += static_cast<std::size_t>(done);
        bytes.resize(std::max(bytes.size(), filled + (filled == bytes.size() ? step : 0)));
    }
}

// Opens the files of a root that are there, the one that lies under all others first.
std::uint32_t OpenLayers(RegistryRoot root, std::vector<Layer>& layers) {
    std::vector<std::string> folders = RegistryFolders(root);
    std::reverse(folders.begin(), folders.end());
    for (const std::string& folder : folders) {
        Layer layer;
        const std::uint32_t result = folder.empty() ? ErrorFileNotFound : OpenStore(RegistryFile(folder, root), layer);
        if (result == ErrorSuccess) {
            layers.push_back(std::move(layer));
        } else if (result != ErrorFileNotFound) {
            return result;
        }
    }
    return ErrorSuccess;
}

std::uint32_t ReadLayers(const std::vector<Layer>& layers, RegistryNode& top) {
    for (const Layer& layer : layers) {
        std::string bytes;
        const std::uint32_t result = ReadStore(layer, bytes);
        if (result != ErrorSuccess) {
            return result;
        }
        ReadRegistryText(bytes, top);
    }
    return ErrorSuccess;
}

// The file that is written to; an empty one where there is none.
std::uint32_t ReadFirstLayer(const std::string& path, std::string& bytes) {
    Layer layer;
    const std::uint32_t result = OpenStore(path, layer);
    if (result == ErrorSuccess) {
        return ReadStore(layer, bytes);
    }
    return result == ErrorFileNotFound ? ErrorSuccess : result;
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
    std::vector<Layer> layers;
    std::uint32_t result = OpenLayers(root, layers);
    if (result != ErrorSuccess) {
        return result;
    }
    Cache::Tree fresh;
    bool isSettled = true; // looked at before the reading, for a change may come meanwhile
    for (const Layer& layer : layers) {
        fresh.states.push_back(layer.state);
        isSettled = isSettled && layer.state.IsSettled();
    }
    Cache& cache = TreeCache();
    Cache::Tree& cached = cache.trees[static_cast<std::size_t>(root)];
    const std::lock_guard guard(cache.lock);
    if (cached.top && cached.states == fresh.states) {
        top = cached.top;
        return ErrorSuccess;
    }
    const auto read = std::make_shared<RegistryNode>();
    result = ReadLayers(layers, *read);
    if (result == ErrorSuccess) {
        top = read;
        fresh.top = read;
        cached = isSettled ? std::move(fresh) : Cache::Tree();
    }
    return result;
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
    result = ReadFirstLayer(path, bytes);
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
