#include "platform/linux/files/replacefile.h"

#include "platform/linux/descriptor.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/files/folders.h"
#include "platform/linux/files/transfer.h"
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Platform {

namespace {

constexpr mode_t AnyFileMode = 0666; // less what the user's mask takes

bool WriteContent(const Descriptor& file, std::string_view bytes) {
    PLATFORM_FAULT(WriteContent, false);
    return WriteWhole(file.Get(), bytes.data(), bytes.size()) == bytes.size() || FailFromErrno();
}

bool FlushAndClose(Descriptor& file) {
    PLATFORM_FAULT(FlushAndClose, false);
    return (Flush(file.Get()) && file.Close()) || FailFromErrno();
}

bool RenameFile(const std::string& from, const std::string& to) {
    PLATFORM_FAULT(RenameFile, false);
    return std::rename(from.c_str(), to.c_str()) == 0 || FailFromErrno();
}

// The new file gets the access bits of the one that it replaces.
bool CreateNewFile(const std::string& path, const std::string& old, Descriptor& file) {
    PLATFORM_FAULT(CreateNewFile, false);
    struct stat status {};
    const bool hasOld = stat(old.c_str(), &status) == 0;
    if (hasOld && access(old.c_str(), W_OK) != 0) {
        return FailFromErrno();
    }
    file = Descriptor(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, AnyFileMode));
    return (file && (!hasOld || fchmod(file.Get(), status.st_mode & ALLPERMS) == 0)) || FailFromErrno();
}

} // namespace

bool ReplaceFile(const std::string& path, std::string_view bytes) {
    std::array<char, PATH_MAX> buffer{};
    const std::string target = realpath(path.c_str(), buffer.data()) ? buffer.data() : path;
    const std::string fresh = target + ".new";
    unlink(fresh.c_str()); // what a writer left that was killed
    Descriptor file;
    const bool isWritten = CreateNewFile(fresh, target, file) && WriteContent(file, bytes) && FlushAndClose(file);
    if (!isWritten || !RenameFile(fresh, target)) {
        unlink(fresh.c_str());
        return false;
    }
    // So that the name is on the disk too; the file is whole either way.
    const std::size_t separator = target.find_last_of('/');
    static_cast<void>(FlushFolder(separator == std::string::npos ? "." : target.substr(0, separator + 1)));
    return true;
}

} // namespace Platform
