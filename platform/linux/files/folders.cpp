#include "platform/linux/files/folders.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/files/transfer.h"
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Platform {

namespace {

constexpr mode_t FolderMode = 0700;

Descriptor OpenForReading(int folder) {
    return Descriptor(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

bool ReadNext(DIR* stream, const char*& name) {
    PLATFORM_FAULT(ReadNext, false);
    errno = 0; // the end leaves it
    const dirent* entry = readdir(stream);
    if (!entry && errno != 0) {
        return FailFromErrno();
    }
    name = entry ? entry->d_name : nullptr;
    return true;
}

} // namespace

Listing::Listing(int folder) : stream(nullptr, &closedir) {
    Descriptor readable = OpenForReading(folder);
    stream.reset(readable ? fdopendir(readable.Get()) : nullptr);
    if (!stream) {
        error = WindowsErrorCode(errno);
        return;
    }
    static_cast<void>(readable.Release());
}

const char* Listing::Next() {
    const char* name = nullptr;
    if (error == 0 && !ReadNext(stream.get(), name)) {
        error = GetLastError();
    }
    return name;
}

bool FlushFolder(int folder) {
    PLATFORM_FAULT(FlushFolder, false);
    const Descriptor readable = OpenForReading(folder);
    if (!readable && errno != EACCES) {
        return FailFromErrno();
    }
    // EINVAL: the file system has no such call for folders.
    return !readable || Flush(readable.Get()) || errno == EINVAL || FailFromErrno();
}

bool FlushFolder(const std::string& path) {
    const Descriptor folder(open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    return folder ? FlushFolder(folder.Get()) : FailFromErrno();
}

bool MakeFolders(const std::string& path) {
    PLATFORM_FAULT(MakeFolders, false);
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        if (mkdir(path.substr(0, end).c_str(), FolderMode) != 0 && errno != EEXIST) {
            return FailFromErrno();
        }
        if (end == std::string::npos) {
            return true;
        }
    }
}

} // namespace Platform
