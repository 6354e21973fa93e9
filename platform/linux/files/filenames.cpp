#include "platform/inc/filenames.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/files/fileinfo.h"
#include "platform/linux/files/fullpath.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/files/searchfolders.h"
#include "platform/linux/files/sharetable.h"
#include "platform/linux/text/nativetext.h"
#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace Platform {

namespace {

bool ReadInfo(const char16_t* path, FileAttributeData& data) {
    Location location;
    if (!LocateExisting(path, location)) {
        return false;
    }
    return ReadEntryInfo(location.folder.Get(), location.name, data) || FailFromErrno();
}

std::uint32_t GivePath(const FullPath& full, std::uint32_t size, char16_t* buffer, char16_t** filePart) {
    const std::u16string text = full.Text();
    const std::uint32_t length = CopyPath(text, size, buffer);
    const std::size_t nameStart = text.find_last_of(u'\\') + 1;
    const bool hasName = length < size && !full.closed && nameStart < text.size() &&
                         (!full.parts.empty() || full.root.find(u'\\', 2) != std::u16string::npos);
    if (filePart) {
        *filePart = hasName ? buffer + nameStart : nullptr;
    }
    return length;
}

std::vector<std::u16string> FoldersOf(const char16_t* path) {
    if (!path) {
        return SearchFolders();
    }
    std::vector<std::u16string> folders;
    std::u16string_view rest = path;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(u';'), rest.size());
        folders.emplace_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return folders;
}

bool IsFile(std::u16string_view path) {
    Location location;
    return LocateExisting(path, location) && !location.IsFolder();
}

// A name that says by itself where it is: with a drive or a root, or seen from the current folder.
bool IsPlaced(std::u16string_view name) {
    const bool rooted = IsSeparator(name[0]) || (name.size() > 1 && name[1] == u':');
    const std::size_t dots = std::min(name.find_first_not_of(u'.'), name.size());
    return rooted || ((dots == 1 || dots == 2) && dots < name.size() && IsSeparator(name[dots]));
}

std::u16string FindFile(const char16_t* path, std::u16string_view name) {
    const std::vector<std::u16string> candidates = CandidateNames(name);
    const std::vector<std::u16string> folders = IsPlaced(name) ? std::vector<std::u16string>(1) : FoldersOf(path);
    for (const std::u16string& folder : folders) {
        for (const std::u16string& candidate : candidates) {
            std::u16string file = folder;
            file += folder.empty() ? u"" : u"\\";
            file += candidate;
            if (IsFile(file)) {
                return file;
            }
        }
    }
    return {};
}

} // namespace

std::uint32_t GetFileAttributes(const char16_t* path) {
    PLATFORM_FAULT(GetFileAttributes, InvalidFileAttributes);
    FileAttributeData data;
    return ReadInfo(path, data) ? data.attributes : InvalidFileAttributes;
}

bool GetFileAttributesEx(const char16_t* path, FileAttributeData& data) {
    PLATFORM_FAULT(GetFileAttributesEx, false);
    return ReadInfo(path, data);
}

bool SetFileAttributes(const char16_t* path, std::uint32_t attributes) {
    PLATFORM_FAULT(SetFileAttributes, false);
    Location location;
    if (!LocateExisting(path, location)) {
        return false;
    }
    const Descriptor file(openat(location.folder.Get(), location.name.c_str(), O_PATH | O_CLOEXEC));
    if (!file) {
        return FailFromErrno();
    }
    return StoreAttributes(file.Get(), location.name, attributes);
}

bool DeleteFile(const char16_t* path) {
    PLATFORM_FAULT(DeleteFile, false);
    Location location;
    if (!LocateExisting(path, location)) {
        return false;
    }
    if (location.IsFolder()) {
        return Fail(ErrorAccessDenied);
    }
    ShareTableLock lock;
    struct stat status {};
    if (fstatat(location.folder.Get(), location.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return FailFromErrno();
    }
    if (S_ISREG(status.st_mode)) { // a link goes itself, whatever it leads to
        if ((status.st_mode & S_IWUSR) == 0) {
            return Fail(ErrorAccessDenied);
        }
        if (!lock.AllowsDelete(FileKey(status))) {
            return Fail(ErrorSharingViolation);
        }
        if (!lock.OthersAllowDelete(location.folder.Get(), location.name.c_str())) {
            return false;
        }
    }
    return unlinkat(location.folder.Get(), location.name.c_str(), 0) == 0 || FailFromErrno();
}

std::uint32_t GetFullPathName(const char16_t* path, std::uint32_t size, char16_t* buffer, char16_t** filePart) {
    PLATFORM_FAULT(GetFullPathName, 0);
    FullPath full;
    return ResolveFullPath(path, full) ? GivePath(full, size, buffer, filePart) : 0;
}

std::uint32_t SearchPath(const char16_t* path, const char16_t* file, const char16_t* extension, std::uint32_t size,
                         char16_t* buffer, char16_t** filePart) {
    PLATFORM_FAULT(SearchPath, 0);
    std::u16string name = file;
    if (name.empty()) {
        return Fail(ErrorInvalidParameter, 0U);
    }
    const std::size_t nameStart = name.find_last_of(u"\\/:") + 1;
    if (extension && name.find(u'.', nameStart) == std::u16string::npos) {
        name += extension;
    }
    const std::u16string found = FindFile(path, name);
    FullPath full;
    if (found.empty() || !ResolveFullPath(found, full)) {
        return Fail(ErrorFileNotFound, 0U);
    }
    return GivePath(full, size, buffer, filePart);
}

} // namespace Platform
