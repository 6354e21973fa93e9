// Copies and moves of files by name.
#include "platform/inc/filenames.h"

#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/files/fileinfo.h"
#include "platform/linux/files/fileopen.h"
#include "platform/linux/files/folders.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/files/sharetable.h"
#include "platform/linux/files/transfer.h"
#include "platform/linux/text/nativetext.h"
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace Platform {

namespace {

bool CopyLastWriteTime(int target, const struct stat& source) {
    const std::array<timespec, 2> times{timespec{0, UTIME_OMIT}, source.st_mtim};
    return futimens(target, times.data()) == 0;
}

// Removes a half-written target, if the name still means it.
void RemoveTarget(const Location& location, const FileKey& key) {
    struct stat status {};
    if (fstatat(location.folder.Get(), location.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
        FileKey(status) == key) {
        unlinkat(location.folder.Get(), location.name.c_str(), 0);
    }
}

bool FlushContent(int descriptor) {
    PLATFORM_FAULT(FlushContent, false);
    return Flush(descriptor) || errno == EINVAL || FailFromErrno(); // EINVAL: a device keeps nothing back
}

struct CopyMode {
    bool failIfExists;
    bool writeThrough = false; // content and name are on the disk when the copy is done
};

// Content first, so that the time that is copied is the last.
bool FillTarget(FileObject& target, const FileObject& source, const struct stat& status, const CopyMode& mode) {
    const int output = target.descriptor.Get();
    const bool copied = CopyContent(source.descriptor.Get(), output) && CopyLastWriteTime(output, status);
    const bool filled = (copied || FailFromErrno()) && (!mode.writeThrough || FlushContent(output));
    const std::uint32_t error = GetLastError();
    const bool closed = target.Close(); // a volume may say only here that it had no room
    return filled ? closed : Fail(error);
}

bool Copy(const char16_t* source, const char16_t* target, const CopyMode& mode) {
    constexpr std::uint32_t shareAll = FileShareRead | FileShareWrite | FileShareDelete;
    Location from;
    const std::unique_ptr<FileObject> input = OpenFileObject(source, {GenericRead, shareAll, OpenExisting, 0}, from);
    if (!input) {
        return false;
    }
    struct stat status {};
    FileAttributeData data;
    if (fstat(input->descriptor.Get(), &status) != 0 || !ReadFileInfo(input->descriptor.Get(), from.name, data)) {
        const std::uint32_t error = WindowsErrorCode(errno);
        input->Close();
        return Fail(error);
    }
    const FileKey key(status);
    OpenRequest request{GenericWrite, FileShareRead | FileShareWrite, mode.failIfExists ? CreateNew : CreateAlways,
                        data.attributes};
    request.permissions = status.st_mode & 0777;
    request.other = &key;
    Location to;
    const std::unique_ptr<FileObject> output = OpenFileObject(target, request, to);
    bool copied = false;
    if (output) {
        struct stat made {};
        const bool known = fstat(output->descriptor.Get(), &made) == 0;
        copied = FillTarget(*output, *input, status, mode) && (!mode.writeThrough || FlushFolder(to.folder.Get()));
        if (!copied && known) {
            const std::uint32_t error = GetLastError();
            RemoveTarget(to, FileKey(made));
            SetLastError(error);
        }
    }
    const std::uint32_t error = GetLastError();
    input->Close();
    SetLastError(copied ? 0 : error);
    return copied;
}

// Gives a file or folder a name that nobody has. -1 with errno set.
int RenameToNew(const Location& from, const Location& to, const std::string& name) {
    const int result = renameat2(from.folder.Get(), from.name.c_str(), to.folder.Get(), name.c_str(), RENAME_NOREPLACE);
    if (result == 0 || errno != EINVAL) {
        return result;
    }
    // A file system without that call: an empty folder or a second link claims the name.
    if (S_ISDIR(from.status.st_mode)) {
        if (mkdirat(to.folder.Get(), name.c_str(), 0700) != 0) {
            return -1;
        }
        if (renameat(from.folder.Get(), from.name.c_str(), to.folder.Get(), name.c_str()) == 0) {
            return 0;
        }
        const int error = errno;
        unlinkat(to.folder.Get(), name.c_str(), AT_REMOVEDIR);
        errno = error;
        return -1;
    }
    if (linkat(from.folder.Get(), from.name.c_str(), to.folder.Get(), name.c_str(), 0) != 0) {
        return -1;
    }
    return unlinkat(from.folder.Get(), from.name.c_str(), 0);
}

// The same entry under another spelling of its name.
bool IsSameEntry(const Location& from, const Location& to) {
    struct stat fromFolder {};
    struct stat toFolder {};
    return from.name == to.name && fstat(from.folder.Get(), &fromFolder) == 0 &&
           fstat(to.folder.Get(), &toFolder) == 0 && FileKey(fromFolder) == FileKey(toFolder);
}

bool MayLeave(ShareTableLock& lock, const Location& from) {
    if (!S_ISREG(from.status.st_mode)) {
        return true;
    }
    if (!lock.AllowsDelete(FileKey(from.status))) {
        return Fail(ErrorSharingViolation);
    }
    return lock.OthersAllowDelete(from.folder.Get(), from.name.c_str());
}

bool MayReplace(ShareTableLock& lock, const Location& from, const Location& to) {
    const bool writable = to.IsLink() || (to.status.st_mode & S_IWUSR) != 0;
    const bool free = !lock.IsOpen(FileKey(to.status)) && lock.OthersAllowDelete(to.folder.Get(), to.name.c_str());
    if (to.IsFolder() || from.IsFolder() || !writable || !free) {
        return Fail(ErrorAccessDenied);
    }
    return true;
}

// 0 if it is done; the errno value of a rename that failed; -1 with the last error set for one that may not be.
int Rename(const Location& from, const Location& to, bool replace) {
    ShareTableLock lock;
    if (!MayLeave(lock, from)) {
        return -1;
    }
    int result = 0;
    if (IsSameEntry(from, to)) {
        result = to.requestedName == from.name ? 0 : RenameToNew(from, to, to.requestedName);
    } else if (!to.exists) {
        result = RenameToNew(from, to, to.name);
    } else if (!replace) {
        return Fail(ErrorAlreadyExists, -1);
    } else if (!MayReplace(lock, from, to)) {
        return -1;
    } else {
        result = renameat(from.folder.Get(), from.name.c_str(), to.folder.Get(), to.name.c_str());
    }
    return result == 0 ? 0 : errno;
}

bool Move(const char16_t* source, const char16_t* target, std::uint32_t flags);

/// A path in the folder of another that no other move uses.
std::u16string StandInPath(std::u16string_view path) {
    static std::atomic<unsigned> count{0};
    const std::size_t name = path.find_last_of(u"\\/:") + 1; // 0 where there is none
    const std::string standIn = "~" + std::to_string(getpid()) + "." + std::to_string(count++) + ".tmp";
    return std::u16string(path.substr(0, name)) + WideName(standIn);
}

// The copy takes the target's name when it is whole: whoever looks meanwhile, or afterwards where this process was
// killed, finds the old target or the new one.
bool MoveToOtherVolume(const char16_t* source, const char16_t* target, bool isFolder, std::uint32_t flags) {
    if ((flags & MoveFileCopyAllowed) == 0) {
        return Fail(ErrorNotSameDevice);
    }
    if (isFolder) {
        return Fail(ErrorAccessDenied);
    }
    const std::u16string standIn = StandInPath(target);
    if (!Copy(source, standIn.c_str(), {true, (flags & MoveFileWriteThrough) != 0})) {
        return false;
    }
    if (!Move(standIn.c_str(), target, flags & ~MoveFileCopyAllowed)) {
        const std::uint32_t error = GetLastError();
        DeleteFile(standIn.c_str());
        return Fail(error);
    }
    static_cast<void>(DeleteFile(source)); // a source that stays is no failure of the move
    return true;
}

bool Move(const char16_t* source, const char16_t* target, std::uint32_t flags) {
    constexpr std::uint32_t known = MoveFileReplaceExisting | MoveFileCopyAllowed | MoveFileWriteThrough;
    Location from;
    Location to;
    if ((flags & ~known) != 0) {
        return Fail(ErrorInvalidParameter);
    }
    if (!LocateExisting(source, from) || !Locate(target, to)) {
        return false;
    }
    if (from.isRoot || to.isRoot) {
        return Fail(ErrorAccessDenied);
    }
    if (to.closed && !from.IsFolder()) {
        return Fail(ErrorInvalidName);
    }
    const int error = Rename(from, to, (flags & MoveFileReplaceExisting) != 0);
    if (error == EXDEV) {
        return MoveToOtherVolume(source, target, from.IsFolder(), flags);
    }
    if (error > 0) {
        // A folder that is to move below itself is in use by its own path.
        return Fail(error == EINVAL ? ErrorSharingViolation : WindowsErrorCode(error));
    }
    if (error == 0 && (flags & MoveFileWriteThrough) != 0) {
        static_cast<void>(FlushFolder(to.folder.Get())); // the move itself is done
    }
    return error == 0;
}

} // namespace

bool CopyFile(const char16_t* source, const char16_t* target, bool failIfExists) {
    PLATFORM_FAULT(CopyFile, false);
    return Copy(source, target, {failIfExists});
}

bool MoveFile(const char16_t* source, const char16_t* target) {
    PLATFORM_FAULT(MoveFile, false);
    return Move(source, target, MoveFileCopyAllowed);
}

bool MoveFileEx(const char16_t* source, const char16_t* target, std::uint32_t flags) {
    PLATFORM_FAULT(MoveFileEx, false);
    return Move(source, target, flags);
}

} // namespace Platform
