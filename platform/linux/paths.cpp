#include "platform/linux/paths.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/lettercase.h"
#include "platform/linux/nativetext.h"
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <span>

namespace Platform {

namespace {

constexpr std::size_t LongestName = 255;
constexpr std::size_t LongestPath = 32767;
constexpr std::u16string_view AsItStands = u"\\\\?\\";

// The folder that stands for a drive.
bool DriveFolder(std::u16string_view drive, std::string& folder) {
    const char16_t letter = UpcaseCharacter(drive[0]);
    if (letter == u'Z') {
        folder = "/";
        return true;
    }
    const std::string variable = std::string("TESSARIX_DRIVE_") + NativeName({&letter, 1});
    const char* value = std::getenv(variable.c_str());
    folder = value ? value : "";
    return !folder.empty() || Fail(ErrorPathNotFound);
}

bool IsDrive(std::u16string_view text) {
    return text.size() == 2 && text[1] == u':';
}

// A path as its root folder and the names behind it.
bool ParsePath(std::u16string_view path, FullPath& full, std::string& start) {
    if (path.empty()) {
        return Fail(ErrorPathNotFound);
    }
    if (path.size() > LongestPath) {
        return Fail(ErrorFilenameExcedRange);
    }
    if (path.starts_with(AsItStands)) {
        full.kind = PathKind::Device;
        full.closed = path.ends_with(u'\\');
        full.parts = SplitAsItStands(path.substr(AsItStands.size()));
    } else if (!ParseFullPath(path, full)) {
        return false;
    }
    if (full.kind == PathKind::Device) {
        if (full.parts.empty() || !IsDrive(full.parts[0])) {
            const bool share = !full.parts.empty() && NamesEqual(full.parts[0], u"UNC");
            return Fail(share ? ErrorBadNetworkPath : ErrorFileNotFound);
        }
        full.root = full.parts[0];
        full.parts.erase(full.parts.begin());
    }
    return full.kind == PathKind::Share ? Fail(ErrorBadNetworkPath) : DriveFolder(full.root, start);
}

// What this system would take for more than one step.
bool IsPath(std::u16string_view name) {
    return name == u"." || name == u".." || name.find(u'/') != std::u16string_view::npos;
}

bool CanBeName(std::u16string_view name) {
    return std::all_of(name.begin(), name.end(), [](char16_t c) {
        return c >= u' ' && std::u16string_view(u"<>:\"\\|?*").find(c) == std::u16string_view::npos;
    });
}

// The walk from a root folder down to a name.
class Walk {
public:
    Walk(Location& target, const std::string& start, bool takenAsItStands)
        : location(target), asItStands(takenAsItStands) {
        location.native = start;
        location.name = ".";
        location.isRoot = true;
        location.folder = Descriptor(open(start.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        error = location.folder ? 0 : ErrorPathNotFound;
    }

    /// Goes down the first names, as many as are folders spelled as they stand, in one step, and returns their number:
    /// all of them or none.
    std::size_t EnterAtOnce(std::span<const std::u16string> names) {
        std::string below;
        for (const std::u16string& name : names) {
            if (name.empty() || IsPath(name)) {
                return 0;
            }
            below.append(below.empty() ? "" : "/").append(NativeName(name));
        }
        Descriptor next(error == 0 && !below.empty()
                            ? openat(location.folder.Get(), below.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)
                            : -1);
        if (!next) {
            return 0;
        }
        location.folder = std::move(next);
        location.native.append(location.native.ends_with('/') ? "" : "/").append(below);
        return names.size();
    }

    /// Where the path has no names: the root itself.
    void Stay() { Look(); }

    /// Goes into the name reached so far and on to `name` in it.
    void Enter(std::u16string_view name) {
        if (!location.isRoot) {
            EnterFolder();
        }
        location.isRoot = false;
        location.name = NativeName(name);
        location.asked = location.name;
        location.exists = false;
        if (error == 0) {
            LookFor(name);
        }
        if (!location.native.ends_with('/')) {
            location.native += '/';
        }
        location.native += location.name;
    }

    /// 0 if the folder of the name reached was entered and the name may be.
    std::uint32_t Error() const { return error; }

private:
    void EnterFolder() {
        if (error != 0) {
            return;
        }
        Descriptor next(openat(location.folder.Get(), location.name.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!next) {
            error = errno == ENOENT ? ErrorPathNotFound : WindowsErrorCode(errno);
        }
        location.folder = std::move(next);
    }

    bool Look() {
        location.exists = location.folder && fstatat(location.folder.Get(), location.name.c_str(), &location.status,
                                                     AT_SYMLINK_NOFOLLOW) == 0;
        return location.exists;
    }

    void LookFor(std::u16string_view name) {
        if (name.size() > LongestName) {
            location.tooLong = !asItStands;
            error = asItStands ? ErrorInvalidName : ErrorPathNotFound;
            return;
        }
        const bool possible =
            !IsPath(name) && (Look() || errno != ENOENT || (FindSpelling(name) && Look()) || CanBeName(name));
        if (!possible) {
            error = ErrorInvalidName;
        } else if (!location.exists && errno != ENOENT) {
            error = WindowsErrorCode(errno);
        }
    }

    // The entry that equals `name` but for case.
    bool FindSpelling(std::u16string_view name) {
        const Listing listing = OpenListing(location.folder.Get());
        while (const dirent* entry = listing ? readdir(listing.get()) : nullptr) {
            if (NamesEqual(WideName(entry->d_name), name)) {
                location.name = entry->d_name;
                return true;
            }
        }
        errno = ENOENT;
        return false;
    }

    Location& location;
    bool asItStands;
    std::uint32_t error = 0;
};

// The error that stands in the way of the name, 0 if none; false when there is no native path at all.
bool WalkTo(std::u16string_view path, Location& location, std::uint32_t& error) {
    FullPath full;
    std::string start;
    if (!ParsePath(path, full, start)) {
        return false;
    }
    location = Location();
    Walk walk(location, start, path.starts_with(AsItStands));
    const std::span<const std::u16string> parts = full.parts;
    if (parts.empty()) {
        walk.Stay();
    }
    // The steps one by one are for a name that is spelled otherwise, or missing, and tell what is wrong with which.
    for (std::size_t i = parts.empty() ? 0 : walk.EnterAtOnce(parts.first(parts.size() - 1)); i < parts.size(); ++i) {
        walk.Enter(parts[i]);
    }
    location.closed = full.closed;
    error = walk.Error();
    return true;
}

} // namespace

bool Location::IsFolder() const {
    struct stat target {};
    return exists && fstatat(folder.Get(), name.c_str(), &target, 0) == 0 && S_ISDIR(target.st_mode);
}

bool Locate(std::u16string_view path, Location& location) {
    std::uint32_t error = 0;
    return WalkTo(path, location, error) && (error == 0 || Fail(error));
}

bool LocateExisting(std::u16string_view path, Location& location) {
    if (!Locate(path, location)) {
        return false;
    }
    if (!location.exists) {
        return Fail(ErrorFileNotFound);
    }
    return !location.closed || location.IsFolder() || Fail(ErrorInvalidName);
}

bool MapPath(std::u16string_view path, std::string& native) {
    Location location;
    std::uint32_t ignored = 0; // what stands in the way shows when the path is used
    if (!WalkTo(path, location, ignored)) {
        return false;
    }
    native = location.native;
    return true;
}

Listing OpenListing(int folder) {
    Descriptor readable(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    Listing listing(readable ? fdopendir(readable.Get()) : nullptr, &closedir);
    if (listing) {
        static_cast<void>(readable.Release());
    }
    return listing;
}

} // namespace Platform
