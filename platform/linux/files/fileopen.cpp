#include "platform/linux/files/fileopen.h"

#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/files/fileinfo.h"
#include "platform/linux/files/transfer.h"
#include <cerrno>
#include <fcntl.h>
#include <new>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace Platform {

namespace {

constexpr std::uint32_t GenericBits = GenericRead | GenericWrite;
constexpr std::uint32_t FileFlagOverlapped = 0x40000000;    // FILE_FLAG_OVERLAPPED
constexpr std::uint32_t FileFlagDeleteOnClose = 0x04000000; // FILE_FLAG_DELETE_ON_CLOSE
constexpr std::uint32_t RefusedFlags = FileFlagOverlapped | FileFlagDeleteOnClose;
constexpr std::uint32_t GuardedBits = FileAttributeHidden | FileAttributeSystem;

bool Empties(const OpenRequest& request) {
    return request.disposition == CreateAlways || request.disposition == TruncateExisting;
}

bool IsPossible(const OpenRequest& request) {
    const bool known = request.disposition >= CreateNew && request.disposition <= TruncateExisting;
    const bool emptiesUnasked = request.disposition == TruncateExisting && (request.access & GenericWrite) == 0;
    return known && !emptiesUnasked && (request.access & ~GenericBits) == 0 && (request.attributes & RefusedFlags) == 0;
}

// Emptying is writing, also for a handle that then only reads.
int NativeFlags(const OpenRequest& request, bool empties) {
    const bool writes = (request.access & GenericWrite) != 0 || empties;
    const bool reads = (request.access & GenericRead) != 0;
    const int through = (request.attributes & FileFlagWriteThrough) != 0 ? O_DSYNC : 0;
    if (!writes && !reads) {
        return O_PATH | O_CLOEXEC;
    }
    return (writes ? (reads ? O_RDWR : O_WRONLY) : O_RDONLY) | through | O_CLOEXEC | O_NOCTTY;
}

ShareUse UseOf(const OpenRequest& request, bool empties) {
    const bool writes = (request.access & GenericWrite) != 0;
    const bool reads = (request.access & GenericRead) != 0;
    return {(reads ? FileShareRead : 0) | (writes ? FileShareWrite : 0), request.share, empties ? FileShareWrite : 0};
}

enum class Outcome { Done, Failed, ChangedMeanwhile };

class Opening {
public:
    Opening(const OpenRequest& openRequest, Location& place, FileObject& object)
        : request(openRequest), location(place), file(object) {}

    Outcome OpenPresent() {
        if (request.disposition == CreateNew) {
            return Failed(ErrorFileExists);
        }
        const bool empties = Empties(request);
        if (!Open(NativeFlags(request, empties), 0)) {
            return errno == ENOENT && !location.IsLink() ? Outcome::ChangedMeanwhile : FailedToOpen();
        }
        const std::uint32_t refusal = S_ISDIR(status.st_mode) ? FolderRefusal() : FileRefusal();
        if (refusal != 0) {
            return Failed(refusal);
        }
        const bool claimed = Claim(empties);
        if (!NameStillMeansIt()) {
            return Outcome::ChangedMeanwhile; // also after a refusal: it was for the file that is gone
        }
        const bool ready = claimed && (!empties || Empty()) && (!request.needsLength || GiveLength());
        return ready ? Outcome::Done : Outcome::Failed;
    }

    Outcome Make() {
        if (request.disposition == OpenExisting || request.disposition == TruncateExisting) {
            return Failed(ErrorFileNotFound);
        }
        if (location.closed) {
            return Failed(ErrorInvalidName);
        }
        const bool readOnly = (request.attributes & FileAttributeReadOnly) != 0;
        const mode_t mode = request.permissions & ~(readOnly ? 0222U : 0U);
        // A metadata handle cannot make a file.
        const int flags = request.access == 0 ? O_RDONLY | O_CLOEXEC : NativeFlags(request, false);
        if (!Open(flags | O_CREAT | O_EXCL, mode)) {
            return errno == EEXIST ? Outcome::ChangedMeanwhile : FailedToOpen();
        }
        const bool claimed = Claim(false);
        if (!NameStillMeansIt()) {
            return Outcome::ChangedMeanwhile;
        }
        if (!claimed) {
            return Outcome::Failed;
        }
        SetAttributes();
        return Outcome::Done;
    }

    bool IsDisk() const { return S_ISREG(status.st_mode) || S_ISBLK(status.st_mode); }

private:
    // False with errno set.
    bool Open(int flags, mode_t mode) {
        file.descriptor =
            Descriptor(Retry([&] { return openat(location.folder.Get(), location.name.c_str(), flags, mode); }));
        return file.descriptor && fstat(file.descriptor.Get(), &status) == 0;
    }

    // False when the name was removed or exchanged before this handle was in the table. A file without any link passes
    // when the path is that of a descriptor in /proc.
    bool NameStillMeansIt() {
        if (fstat(file.descriptor.Get(), &status) != 0) {
            return false;
        }
        struct stat named {};
        return status.st_nlink > 0 || (fstatat(location.folder.Get(), location.name.c_str(), &named, 0) == 0 &&
                                       FileKey(named) == FileKey(status));
    }

    // Files that the kernel generates as they are read, in /proc, have the length 0 and content.
    bool HasLength() const {
        char byte = 0;
        return S_ISDIR(status.st_mode) ||
               (S_ISREG(status.st_mode) && (status.st_size > 0 || pread(file.descriptor.Get(), &byte, 1, 0) <= 0));
    }

    // A memory file with the content takes the place of one without a length.
    bool GiveLength() {
        if (HasLength()) {
            return true;
        }
        Descriptor whole(memfd_create("content", MFD_CLOEXEC));
        if (!whole || !CopyContent(file.descriptor.Get(), whole.Get(), LargestWithoutLength) ||
            lseek(whole.Get(), 0, SEEK_SET) != 0 || fstat(whole.Get(), &status) != 0) {
            return Fail(errno == EFBIG ? ErrorFileTooLarge : WindowsErrorCode(errno));
        }
        file.descriptor = std::move(whole);
        return true;
    }

    static Outcome Failed(std::uint32_t code) {
        SetLastError(code);
        return Outcome::Failed;
    }

    Outcome FailedToOpen() const {
        const bool folder = errno == EISDIR && location.closed;
        return Failed(folder ? ErrorPathNotFound : WindowsErrorCode(errno));
    }

    std::uint32_t FolderRefusal() const {
        const bool wanted = (request.attributes & FileFlagBackupSemantics) != 0 && !Empties(request);
        return wanted ? 0 : location.closed ? ErrorPathNotFound : ErrorAccessDenied;
    }

    std::uint32_t FileRefusal() const {
        if (location.closed) {
            return ErrorInvalidName;
        }
        const bool writes = (request.access & GenericWrite) != 0 || Empties(request);
        if (writes && (status.st_mode & S_IWUSR) == 0) {
            return ErrorAccessDenied;
        }
        if (request.other && *request.other == FileKey(status)) {
            return ErrorSharingViolation;
        }
        // The stored attributes alone: one that is hidden only because its name begins with a dot may be overwritten.
        const bool guarded = request.disposition == CreateAlways &&
                             (StoredAttributes(file.descriptor.Get()) & GuardedBits & ~request.attributes) != 0;
        return guarded ? ErrorAccessDenied : 0;
    }

    // Devices and pipes have no share modes.
    bool Claim(bool empties) {
        const bool shares = S_ISREG(status.st_mode) || S_ISDIR(status.st_mode);
        return !shares || file.claim.Enter(file.descriptor.Get(), FileKey(status), UseOf(request, empties));
    }

    bool Empty() {
        if (!S_ISREG(status.st_mode)) {
            return true;
        }
        if (Retry([&] { return ftruncate(file.descriptor.Get(), 0); }) != 0) {
            return FailFromErrno();
        }
        if (request.disposition == CreateAlways) {
            SetAttributes();
        }
        return true;
    }

    // Where the file system cannot keep the attributes, the file is made without them.
    void SetAttributes() const {
        static_cast<void>(StoreAttributes(file.descriptor.Get(), location.name,
                                          request.attributes | FileAttributeArchive | NameBit()));
    }

    // A new file whose name begins with a dot stays hidden when its attributes are stored without that bit.
    std::uint32_t NameBit() const { return location.name.starts_with('.') ? FileAttributeHidden : 0; }

    const OpenRequest& request;
    Location& location;
    FileObject& file;
    struct stat status {};
};

} // namespace

std::unique_ptr<FileObject> OpenFileObject(std::u16string_view path, const OpenRequest& request, Location& location) {
    if (!IsPossible(request)) {
        return Fail(ErrorInvalidParameter, nullptr);
    }
    constexpr int attempts = 100; // each ends because someone else made or removed the name just then
    for (int i = 0; i < attempts && Locate(path, location); ++i) {
        std::unique_ptr<FileObject> file(new (std::nothrow) FileObject);
        if (!file) {
            return Fail(ErrorNotEnoughMemory, nullptr);
        }
        Opening opening(request, location, *file);
        const bool present = location.exists;
        const Outcome outcome = present ? opening.OpenPresent() : opening.Make();
        if (outcome == Outcome::Done) {
            file->access = request.access;
            file->isDisk = opening.IsDisk();
            const bool kept = present && (request.disposition == CreateAlways || request.disposition == OpenAlways);
            SetLastError(kept ? ErrorAlreadyExists : 0);
            return file;
        }
        if (outcome == Outcome::Failed) {
            return nullptr;
        }
        SetLastError(ErrorSharingViolation); // what is reported if the last attempt fails too
    }
    return nullptr;
}

} // namespace Platform
