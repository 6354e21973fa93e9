#include "platform/inc/files.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/fileinfo.h"
#include "platform/linux/fileopen.h"
#include "platform/linux/handles.h"
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>

namespace Platform {

namespace {

bool Seek(const FileObject& file, std::int64_t distance, std::uint32_t method, std::int64_t& position) {
    constexpr int whence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    if (method >= std::size(whence)) {
        return Fail(ErrorInvalidParameter);
    }
    position = lseek(file.descriptor, distance, whence[method]);
    if (position >= 0) {
        return true;
    }
    return errno == EINVAL ? Fail(ErrorNegativeSeek) : FailFromErrno();
}

bool SizeOf(Handle file, std::int64_t& size) {
    const FileObject* object = FileOf(file);
    struct stat status {};
    if (!object || fstat(object->descriptor, &status) != 0) {
        return object && FailFromErrno();
    }
    size = status.st_size;
    return true;
}

// The low word of a 64-bit result. One that looks like a failure says that it is none.
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

// The value that leaves a time alone, and the one that asks to have it left alone from here on, which it is.
bool IsTimeToSet(const std::int64_t* time) {
    return time && *time != 0 && *time != -1;
}

bool IsPossibleTime(const std::int64_t* time) {
    return !time || *time >= -1;
}

} // namespace

Handle CreateFile(const char16_t* path, std::uint32_t access, std::uint32_t share, void* security,
                  std::uint32_t disposition, std::uint32_t attributes, Handle templateFile) {
    PLATFORM_FAULT(CreateFile, InvalidHandle());
    static_cast<void>(security); // the process's mask is the one default of permissions here
    // A template would give the extended attributes of Windows, of which a file has none here.
    if (templateFile && !FileOf(templateFile)) {
        return InvalidHandle();
    }
    Location location;
    std::unique_ptr<FileObject> file = OpenFileObject(path, {access, share, disposition, attributes}, location);
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
        done = Retry([&] { return ::read(object->descriptor, bytes + read, count - read); });
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
    const auto* bytes = static_cast<const char*>(buffer);
    while (written < count) {
        const ssize_t done = Retry([&] { return write(object->descriptor, bytes + written, count - written); });
        if (done < 0) {
            return FailFromErrno();
        }
        written += static_cast<std::uint32_t>(done);
    }
    return true;
}

std::uint32_t SetFilePointer(Handle file, std::int32_t distance, std::int32_t* distanceHigh, std::uint32_t method) {
    PLATFORM_FAULT(SetFilePointer, InvalidSetFilePointer);
    const FileObject* object = FileOf(file);
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
        SetLastError(ErrorInvalidParameter);
        return InvalidSetFilePointer;
    }
    return LowWord(position);
}

bool SetFilePointerEx(Handle file, std::int64_t distance, std::int64_t& position, std::uint32_t method) {
    PLATFORM_FAULT(SetFilePointerEx, false);
    const FileObject* object = FileOf(file);
    return object && Seek(*object, distance, method, position);
}

bool SetEndOfFile(Handle file) {
    PLATFORM_FAULT(SetEndOfFile, false);
    const FileObject* object = FileOf(file, GenericWrite);
    std::int64_t position = 0;
    return object && Seek(*object, 0, FileCurrent, position) &&
           (Retry([&] { return ftruncate(object->descriptor, position); }) == 0 || FailFromErrno());
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

bool GetFileSizeEx(Handle file, std::int64_t& size) {
    PLATFORM_FAULT(GetFileSizeEx, false);
    return SizeOf(file, size);
}

bool GetFileTime(Handle file, std::int64_t* creation, std::int64_t* lastAccess, std::int64_t* lastWrite) {
    PLATFORM_FAULT(GetFileTime, false);
    const FileObject* object = FileOf(file);
    FileAttributeData data;
    if (!object || !ReadFileInfo(object->descriptor, {}, data)) {
        return object && FailFromErrno();
    }
    const std::pair<std::int64_t*, std::int64_t> results[] = {
        {creation, data.creationTime}, {lastAccess, data.lastAccessTime}, {lastWrite, data.lastWriteTime}};
    for (const auto& [result, value] : results) {
        if (result) {
            *result = value;
        }
    }
    return true;
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
    if (futimens(object->descriptor, times.data()) != 0) {
        return FailFromErrno();
    }
    if (IsTimeToSet(creation)) {
        StoreCreationTime(object->descriptor, *creation);
    }
    return true;
}

bool FlushFileBuffers(Handle file) {
    PLATFORM_FAULT(FlushFileBuffers, false);
    const FileObject* object = FileOf(file, GenericWrite);
    if (!object) {
        return false;
    }
    const bool flushed = Retry([&] { return fsync(object->descriptor); }) == 0;
    return flushed || errno == EINVAL || FailFromErrno(); // EINVAL: a pipe or a device keeps nothing back
}

std::uint32_t GetFileType(Handle file) {
    PLATFORM_FAULT(GetFileType, FileTypeUnknown);
    const FileObject* object = FileOf(file);
    struct stat status {};
    if (!object || fstat(object->descriptor, &status) != 0) {
        if (object) {
            SetLastErrorFromErrno();
        }
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
