#include "platform/linux/paths.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/nativetext.h"
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <dirent.h>
#include <memory>
#include <sys/stat.h>

namespace Platform {

namespace {

bool IsSeparator(char16_t c) {
    return c == u'\\' || c == u'/';
}

bool Exists(const std::string& native) {
    struct stat status {};
    return lstat(native.c_str(), &status) == 0;
}

// Removes a drive and tells the folder that stands for it: "/" or the mapped folder for an absolute path, that of the
// current folder otherwise. A mapped drive has no current folder of its own but its root.
bool TakeDrive(std::u16string_view& path, std::string& start) {
    char16_t letter = u'Z';
    if (path.size() >= 2 && path[1] == u':') {
        letter = path[0] >= u'a' && path[0] <= u'z' ? static_cast<char16_t>(path[0] - 32) : path[0];
        path.remove_prefix(2);
    }
    if (letter == u'Z') {
        start = !path.empty() && IsSeparator(path[0]) ? "/" : "";
        return true;
    }
    const std::string variable = std::string("TESSARIX_DRIVE_") + NativeName({&letter, 1});
    const char* folder = std::getenv(variable.c_str());
    if (!folder || *folder == '\0') {
        return Fail(ErrorPathNotFound);
    }
    start = folder;
    return true;
}

// The entry of `folder` that equals `name` but for case; `name` itself if there is none.
std::string FindSpelling(const std::string& folder, std::u16string_view name, const std::string& nativeName) {
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(opendir(folder.empty() ? "." : folder.c_str()), &closedir);
    while (const dirent* entry = listing ? readdir(listing.get()) : nullptr) {
        if (NamesEqual(WideName(entry->d_name), name)) {
            return entry->d_name;
        }
    }
    return nativeName;
}

void AppendComponent(std::string& native, std::u16string_view name) {
    const std::string folder = native;
    if (!native.empty() && native.back() != '/') {
        native += '/';
    }
    const std::string nativeName = NativeName(name);
    native += nativeName;
    if (!Exists(native)) {
        native.resize(native.size() - nativeName.size());
        native += FindSpelling(folder, name, nativeName);
    }
}

} // namespace

bool MapPath(std::u16string_view path, std::string& native) {
    if (path.empty()) {
        return Fail(ErrorPathNotFound);
    }
    if (path.starts_with(u"\\\\?\\") && path.size() > 5 && path[5] == u':') {
        path.remove_prefix(4);
    } else if (path.size() >= 2 && IsSeparator(path[0]) && path[0] == path[1]) {
        return Fail(ErrorBadNetworkPath);
    }
    std::string start;
    if (!TakeDrive(path, start)) {
        return false;
    }
    native = start;
    while (!path.empty()) {
        const auto* const end = std::find_if(path.begin(), path.end(), IsSeparator);
        const auto length = static_cast<std::size_t>(end - path.begin());
        if (length > 0) {
            AppendComponent(native, path.substr(0, length));
        }
        path.remove_prefix(std::min(length + 1, path.size()));
    }
    if (native.empty()) {
        native = ".";
    }
    return true;
}

bool FailOnPath(const std::string& native) {
    const int error = errno;
    const std::string folder = native.substr(0, native.find_last_of('/') + 1);
    const bool folderMissing = error == ENOENT && !folder.empty() && !Exists(folder);
    return Fail(folderMissing ? ErrorPathNotFound : WindowsErrorCode(error));
}

std::u16string WindowsPath(std::string_view native) {
    std::u16string path = u"Z:" + WideName(native);
    std::replace(path.begin(), path.end(), u'/', u'\\');
    return path;
}

} // namespace Platform
