#include "platform/inc/files.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/handles.h"
#include "platform/linux/nativetext.h"
#include "platform/linux/paths.h"
#include "platform/linux/pipewrite.h"
#include "platform/linux/wildcards.h"
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <new>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace Platform {

namespace {

struct SearchObject {};

// A call that a signal broke off is made again.
template <class TCall>
auto Retry(TCall call) {
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

std::uint32_t AttributesOf(const std::string& native) {
    struct stat status {};
    // A link is what it leads to; one that leads nowhere is a file of its own.
    if (stat(native.c_str(), &status) != 0) {
        return FileAttributeNormal;
    }
    return S_ISDIR(status.st_mode) ? FileAttributeDirectory : FileAttributeNormal;
}

Handle StartSearch(std::u16string_view name, const std::string& native, FindData& data) {
    if (name.size() >= std::size(data.name)) {
        SetLastError(ErrorFilenameExcedRange);
        return InvalidHandle();
    }
    auto* search = new (std::nothrow) SearchObject;
    if (!search) {
        SetLastError(ErrorNotEnoughMemory);
        return InvalidHandle();
    }
    data.attributes = AttributesOf(native);
    *std::copy(name.begin(), name.end(), std::begin(data.name)) = u'\0';
    return search;
}

// The first entry of a folder that matches; "." and ".." come like any other, as they do on Windows.
Handle SearchFolder(const std::string& folder, std::u16string_view pattern, FindData& data) {
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(opendir(folder.c_str()), &closedir);
    if (!listing) {
        SetLastError(errno == ENOENT ? ErrorPathNotFound : WindowsErrorCode(errno));
        return InvalidHandle();
    }
    while (const dirent* entry = readdir(listing.get())) {
        const std::u16string name = WideName(entry->d_name);
        if (MatchesPattern(name, pattern)) {
            return StartSearch(name, folder + "/" + entry->d_name, data);
        }
    }
    SetLastError(ErrorFileNotFound);
    return InvalidHandle();
}

Handle SearchName(std::u16string_view path, FindData& data) {
    std::string native;
    if (!MapPath(path, native)) {
        return InvalidHandle();
    }
    struct stat status {};
    if (lstat(native.c_str(), &status) != 0) {
        FailOnPath(native);
        return InvalidHandle();
    }
    return StartSearch(WideName(native.substr(native.find_last_of('/') + 1)), native, data);
}

} // namespace

Handle CreateFile(const char16_t* path, std::uint32_t access, std::uint32_t share, std::uint32_t disposition,
                  std::uint32_t attributes) {
    PLATFORM_FAULT(CreateFile, InvalidHandle());
    static_cast<void>(share);
    static_cast<void>(attributes);
    if (access != GenericRead || disposition != OpenExisting) {
        SetLastError(ErrorInvalidParameter);
        return InvalidHandle();
    }
    std::string native;
    if (!MapPath(path, native)) {
        return InvalidHandle();
    }
    auto file = std::unique_ptr<FileObject>(new (std::nothrow) FileObject);
    if (!file) {
        SetLastError(ErrorNotEnoughMemory);
        return InvalidHandle();
    }
    file->descriptor = Retry([&] { return open(native.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY); });
    struct stat status {};
    if (file->descriptor >= 0 && fstat(file->descriptor, &status) == 0 && S_ISDIR(status.st_mode)) {
        close(file->descriptor); // a folder opens here and does not on Windows
        SetLastError(ErrorAccessDenied);
        return InvalidHandle();
    }
    if (file->descriptor < 0) {
        FailOnPath(native);
        return InvalidHandle();
    }
    return static_cast<HandleObject*>(file.release());
}

bool ReadFile(Handle file, void* buffer, std::uint32_t count, std::uint32_t& read) {
    read = 0;
    PLATFORM_FAULT(ReadFile, false);
    const FileObject* object = FileOf(file);
    if (!object) {
        return false;
    }
    const ssize_t done = Retry([&] { return ::read(object->descriptor, buffer, count); });
    read = done < 0 ? 0 : static_cast<std::uint32_t>(done);
    return done >= 0 || FailFromErrno();
}

// A pipe or a terminal may take a part at a time; Windows returns when all of it is written.
bool WriteFile(Handle file, const void* buffer, std::uint32_t count, std::uint32_t& written) {
    written = 0;
    PLATFORM_FAULT(WriteFile, false);
    const FileObject* object = FileOf(file);
    if (!object) {
        return false;
    }
    const auto* bytes = static_cast<const char*>(buffer);
    while (written < count) {
        const ssize_t done =
            Retry([&] { return WriteWithoutSignal(object->descriptor, bytes + written, count - written); });
        if (done < 0) {
            return FailFromErrno();
        }
        written += static_cast<std::uint32_t>(done);
    }
    return true;
}

bool SetFilePointerEx(Handle file, std::int64_t distance, std::int64_t& position, std::uint32_t method) {
    PLATFORM_FAULT(SetFilePointerEx, false);
    const FileObject* object = FileOf(file);
    if (!object) {
        return false;
    }
    constexpr int whence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    if (method >= std::size(whence)) {
        return Fail(ErrorInvalidParameter);
    }
    position = lseek(object->descriptor, distance, whence[method]);
    if (position >= 0) {
        return true;
    }
    return errno == EINVAL ? Fail(ErrorNegativeSeek) : FailFromErrno();
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
    if (S_ISREG(status.st_mode) || S_ISBLK(status.st_mode)) {
        return FileTypeDisk;
    }
    if (S_ISCHR(status.st_mode)) {
        return FileTypeChar;
    }
    return S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode) ? FileTypePipe : FileTypeUnknown;
}

Handle FindFirstFile(const char16_t* path, FindData& data) {
    PLATFORM_FAULT(FindFirstFile, InvalidHandle());
    const std::u16string_view whole = path;
    const std::size_t nameStart = whole.find_last_of(u"\\/:") + 1; // npos + 1 is 0: the whole path is a name
    const std::u16string_view name = whole.substr(nameStart);
    if (name.empty()) {
        SetLastError(ErrorFileNotFound); // a root or a closing separator names no entry
        return InvalidHandle();
    }
    if (!HasWildcards(name)) {
        return SearchName(whole, data);
    }
    std::string folder;
    if (!MapPath(nameStart == 0 ? u"." : whole.substr(0, nameStart), folder)) {
        return InvalidHandle();
    }
    return SearchFolder(folder, name, data);
}

bool FindClose(Handle search) {
    delete static_cast<SearchObject*>(search);
    PLATFORM_FAULT(FindClose, false);
    return true;
}

std::uint32_t SetErrorMode(std::uint32_t mode) {
    // No call of this system stops at a box; the word is kept, as Windows keeps it.
    static std::atomic<std::uint32_t> current{0};
    return current.exchange(mode);
}

} // namespace Platform
