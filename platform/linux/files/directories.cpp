#include "platform/inc/directories.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/files/fileinfo.h"
#include "platform/linux/files/handles.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/text/nativetext.h"
#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace Platform {

namespace {

bool IsCurrentFolder(const struct stat& status) {
    struct stat current {};
    return stat(".", &current) == 0 && FileKey(current) == FileKey(status);
}

bool MayRemove(const Location& location) {
    if (location.IsLink()) {
        return true;
    }
    FileAttributeData data;
    if (!ReadEntryInfo(location.folder.Get(), location.name, data)) {
        return FailFromErrno();
    }
    if ((data.attributes & FileAttributeReadOnly) != 0 || location.isRoot) {
        return Fail(ErrorAccessDenied);
    }
    if (IsCurrentFolder(location.status)) {
        return Fail(ErrorSharingViolation);
    }
    return true;
}

std::uint32_t TypeOfVolume(int descriptor) {
    struct statfs volume {};
    if (fstatfs(descriptor, &volume) != 0) {
        return DriveUnknown;
    }
    switch (static_cast<std::uint32_t>(volume.f_type)) {
    case NFS_SUPER_MAGIC:
    case SMB_SUPER_MAGIC:
    case SMB2_SUPER_MAGIC:
    case CIFS_SUPER_MAGIC:
        return DriveRemote;
    case ISOFS_SUPER_MAGIC:
    case UDF_SUPER_MAGIC:
        return DriveCdRom;
    default:
        return DriveFixed;
    }
}

} // namespace

// Permissions come from the process's mask alone.
bool CreateDirectory(const char16_t* path, void*) {
    PLATFORM_FAULT(CreateDirectory, false);
    Location location;
    if (!Locate(path, location)) {
        return location.tooLong ? Fail(ErrorFilenameExcedRange) : false;
    }
    if (location.isRoot) {
        return Fail(ErrorAccessDenied);
    }
    if (location.exists) {
        return Fail(ErrorAlreadyExists);
    }
    return mkdirat(location.folder.Get(), location.name.c_str(), 0777) == 0 || FailFromErrno();
}

bool RemoveDirectory(const char16_t* path) {
    PLATFORM_FAULT(RemoveDirectory, false);
    Location location;
    if (!LocateExisting(path, location)) {
        return false;
    }
    if (!location.IsFolder()) {
        return Fail(ErrorDirectory);
    }
    const int how = location.IsLink() ? 0 : AT_REMOVEDIR; // a link goes itself, what it leads to stays
    if (!MayRemove(location)) {
        return false;
    }
    return unlinkat(location.folder.Get(), location.name.c_str(), how) == 0 || FailFromErrno();
}

bool GetDiskFreeSpaceEx(const char16_t* path, std::uint64_t* freeToCaller, std::uint64_t* total,
                        std::uint64_t* totalFree) {
    PLATFORM_FAULT(GetDiskFreeSpaceEx, false);
    Location location;
    if (!LocateExisting(path ? path : u".", location)) {
        return false;
    }
    const Descriptor folder(openat(location.folder.Get(), location.name.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    struct statvfs volume {};
    if (!folder || fstatvfs(folder.Get(), &volume) != 0) {
        // Where a folder is wanted, a file is ERROR_DIRECTORY rather than what the table has for ENOTDIR.
        return Fail(errno == ENOTDIR ? ErrorDirectory : WindowsErrorCode(errno));
    }
    const std::pair<std::uint64_t*, std::uint64_t> results[] = {
        {freeToCaller, volume.f_bavail}, {total, volume.f_blocks}, {totalFree, volume.f_bfree}};
    for (const auto& [result, blocks] : results) {
        if (result) {
            *result = blocks * volume.f_frsize;
        }
    }
    return true;
}

std::uint32_t GetDriveType(const char16_t* root) {
    PLATFORM_FAULT(GetDriveType, DriveUnknown);
    Location location;
    std::u16string path = root ? root : u"\\";
    if (path.size() == 2 && path[1] == u':') {
        path += u'\\'; // the drive, not its current folder
    }
    const bool drive = Locate(path, location) && location.isRoot;
    return drive ? TypeOfVolume(location.folder.Get()) : DriveNoRootDir;
}

} // namespace Platform
