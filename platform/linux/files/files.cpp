#include "platform/inc/files.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/files/fileinfo.h"
#include "platform/linux/files/fileopen.h"
#include "platform/linux/files/handles.h"
#include "platform/linux/files/transfer.h"
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Platform {

namespace {

// A reader of a pipe that has gone away is a write that fails, as on Windows, and not the end of the process.
__attribute__((constructor)) void IgnorePipeSignal() {
    std::signal(SIGPIPE, SIG_IGN);
}

bool StatusOf(const FileObject& file, struct stat& status) {
    return fstat(file.descriptor.Get(), &status) == 0 || FailFromErrno();
}

bool SeekMetadataHandle(FileObject& file, std::int64_t distance, std::uint32_t method, std::int64_t& position) {
    struct stat status {};
    if (!StatusOf(file, status)) {
        return false;
    }
    const std::int64_t starts[] = {0, file.position, status.st_size};
    std::int64_t target = 0;
    if (__builtin_add_overflow(starts[method], distance, &target)) {
        return Fail(ErrorInvalidParameter);
    }
    if (target < 0) {
        return Fail(ErrorNegativeSeek);
    }
    position = file.position = target;
    return true;
}

// In append mode every write goes to the end of the file, and lseek tells another position until the first write.
bool Appends(int descriptor) {
    const int flags = fcntl(descriptor, F_GETFL);
    return flags >= 0 && (flags & O_APPEND) != 0;
}

bool Seek(FileObject& file, std::int64_t distance, std::uint32_t method, std::int64_t& position) {
    if (method > FileEnd) {
        return Fail(ErrorInvalidParameter);
    }
    if (file.access == 0) {
        return SeekMetadataHandle(file, distance, method, position);
    }
    constexpr int natives[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    const int descriptor = file.descriptor.Get();
    const bool fromEnd = method == FileCurrent && Appends(descriptor);
    const std::int64_t target = lseek(descriptor, distance, fromEnd ? SEEK_END : natives[method]);
    if (target < 0) {
        return Fail(errno == EINVAL ? ErrorNegativeSeek : WindowsErrorCode(errno));
    }
    position = target;
    return true;
}

bool SizeOf(Handle file, std::int64_t& size) {
    const FileObject* object = FileOf(file);
    struct stat status {};
    if (!object || !StatusOf(*object, status)) {
        return false;
    }
    size = status.st_size;
    return true;
}

// The low word of a 64-bit result. Where it equals the value for a failure, the last error tells that there was none.
std::uint32_t LowWord(std::int64_t value) {
    const auto low = static_cast<std::uint32_t>(value);
    if (low == InvalidFileSize) {
        SetLastError(ErrorSuccess);
    }
    return low;
}

std::int64_t JoinWords(std::int32_t low, const std::int32_t* high) {
    if (!high) {
        return low;
    }
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(*high) << 32 | static_cast<std::uint32_t>(low));
}

// 0 leaves a time as it is; so does -1, which on Windows keeps later accesses through the handle from changing it too.
bool IsTimeToSet(const std::int64_t* time) {
    return time && *time != 0 && *time != -1;
}

bool IsPossibleTime(const std::int64_t* time) {
    return !time || *time >= -1;
}

} // namespace

// Permissions come from the process's mask alone.
Handle CreateFile(const char16_t* path, std::uint32_t access, std::uint32_t share, void*, std::uint32_t disposition,
                  std::uint32_t attributes, Handle templateFile) {
    PLATFORM_FAULT(CreateFile, InvalidHandle());
    // A template would give the extended attributes of Windows, of which a file has none here.
    if (templateFile && !FileOf(templateFile)) {
        return InvalidHandle();
    }
    Location location;
    OpenRequest request{access, share, disposition, attributes};
    request.needsLength = access == GenericRead;
    std::unique_ptr<FileObject> file = OpenFileObject(path, request, location);
    return file ? static_cast<HandleObject*>(file.release()) : InvalidHandle();
}

// A file on disk gives all that is asked for up to its end; a pipe or a terminal what it has.
bool ReadFile(Handle file, void* buffer, std::uint32_t count, std::uint32_t& read) {
    read = 0;
    PLATFORM_FAULT(ReadFile, false);
    PLATFORM_TRANSFER(count);
    const FileObject* object = FileOf(file, GenericRead);
    if (!object) {
        return false;
    }
    auto* bytes = static_cast<char*>(buffer);
    ssize_t done = 0;
    do {
        done = Retry([&] { return ::read(object->descriptor.Get(), bytes + read, count - read); });
        read += done < 0 ? 0 : static_cast<std::uint32_t>(done);
    } while (done > 0 && read < count && object->isDisk);
    return done >= 0 || FailFromErrno();
}

// A pipe or a terminal may take a part at a time; Windows returns when all of it is written.
bool WriteFile(Handle file, const void* buffer, std::uint32_t count, std::uint32_t& written) {
    written = 0;
    PLATFORM_FAULT(WriteFile, false);
    PLATFORM_TRANSFER(count);
    const FileObject* object = FileOf(file, GenericWrite);
    if (!object) {
        return false;
    }
    written = static_cast<std::uint32_t>(WriteWhole(object->descriptor.Get(), buffer, count));
    return written == count || FailFromErrno();
}

std::uint32_t SetFilePointer(Handle file, std::int32_t distance, std::int32_t* distanceHigh, std::uint32_t method) {
    PLATFORM_FAULT(SetFilePointer, InvalidSetFilePointer);
    FileObject* object = FileOf(file);
    std::int64_t before = 0;
    std::int64_t position = 0;
    if (!object || (!distanceHigh && !Seek(*object, 0, FileCurrent, before)) ||
        !Seek(*object, JoinWords(distance, distanceHigh), method, position)) {
        return InvalidSetFilePointer;
    }
    if (distanceHigh) {
        *distanceHigh = static_cast<std::int32_t>(position >> 32);
    } else if (position >> 32 != 0) {
        Seek(*object, before, FileBegin, position);
        return Fail(ErrorInvalidParameter, InvalidSetFilePointer);
    }
    return LowWord(position);
}

bool SetFilePointerEx(Handle file, std::int64_t distance, std::int64_t& position, std::uint32_t method) {
    PLATFORM_FAULT(SetFilePointerEx, false);
    FileObject* object = FileOf(file);
    return object && Seek(*object, distance, method, position);
}

bool SetEndOfFile(Handle file) {
    PLATFORM_FAULT(SetEndOfFile, false);
    FileObject* object = FileOf(file, GenericWrite);
    std::int64_t position = 0;
    if (!object || !Seek(*object, 0, FileCurrent, position)) {
        return false;
    }
    return Retry([&] { return ftruncate(object->descriptor.Get(), position); }) == 0 || FailFromErrno();
}

std::uint32_t GetFileSize(Handle file, std::uint32_t* sizeHigh) {
    PLATFORM_FAULT(GetFileSize, InvalidFileSize);
    std::int64_t size = 0;
    if (!SizeOf(file, size)) {
        return InvalidFileSize;
    }
    if (sizeHigh) {
        *sizeHigh = static_cast<std::uint32_t>(static_cast<std::uint64_t>(size) >> 32);
    }
    return LowWord(size);
}

bool SetFileTime(Handle file, const std::int64_t* creation, const std::int64_t* lastAccess,
                 const std::int64_t* lastWrite) {
    PLATFORM_FAULT(SetFileTime, false);
    const FileObject* object = FileOf(file, GenericWrite);
    if (!object) {
        return false;
    }
    if (!IsPossibleTime(creation) || !IsPossibleTime(lastAccess) || !IsPossibleTime(lastWrite)) {
        return Fail(ErrorInvalidParameter);
    }
    constexpr timespec alone{0, UTIME_OMIT};
    const std::array<timespec, 2> times{IsTimeToSet(lastAccess) ? NativeTimeOf(*lastAccess) : alone,
                                        IsTimeToSet(lastWrite) ? NativeTimeOf(*lastWrite) : alone};
    if (futimens(object->descriptor.Get(), times.data()) != 0) {
        return FailFromErrno();
    }
    if (IsTimeToSet(creation)) {
        StoreCreationTime(object->descriptor.Get(), *creation);
    }
    return true;
}

bool FlushFileBuffers(Handle file) {
    PLATFORM_FAULT(FlushFileBuffers, false);
    const FileObject* object = FileOf(file, GenericWrite);
    if (!object) {
        return false;
    }
    // EINVAL: a pipe or a device keeps nothing back.
    return Flush(object->descriptor.Get()) || errno == EINVAL || FailFromErrno();
}

std::uint32_t GetFileType(Handle file) {
    PLATFORM_FAULT(GetFileType, FileTypeUnknown);
    const FileObject* object = FileOf(file);
    struct stat status {};
    if (!object || !StatusOf(*object, status)) {
        return FileTypeUnknown;
    }
    if (S_ISREG(status.st_mode) || S_ISBLK(status.st_mode) || S_ISDIR(status.st_mode)) {
        return FileTypeDisk;
    }
    if (S_ISCHR(status.st_mode)) {
        return FileTypeChar;
    }
    return S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode) ? FileTypePipe : FileTypeUnknown;
}

} // namespace Platform
