#include "platform/linux/files/paths.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/files/folders.h"
#include "platform/linux/text/lettercase.h"
#include "platform/linux/text/nativetext.h"
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

// A path as what is to be looked up.
bool ParsePath(std::u16string_view path, FullPath& full) {
    if (path.empty()) {
        return Fail(ErrorPathNotFound);
    }
    if (path.size() > LongestPath) {
        return Fail(ErrorFilenameExcedRange);
    }
    if (!path.starts_with(AsItStands)) {
        return ResolveFullPath(path, full);
    }
    full.kind = PathKind::Device;
    full.closed = path.ends_with(u'\\');
    full.parts = SplitAsItStands(path.substr(AsItStands.size()));
    return true;
}

// The folder that a path starts from; what stands for it is taken off the path.
bool TakeStart(FullPath& full, std::string& start) {
    if (full.kind == PathKind::Device) {
        if (full.parts.empty() || !IsDrive(full.parts[0])) {
            const bool share = !full.parts.empty() && NamesEqual(full.parts[0], u"UNC");
            return Fail(share ? ErrorBadNetworkPath : ErrorFileNotFound);
        }
        full.root = full.parts[0];
        full.parts.erase(full.parts.begin());
    }
    if (full.kind == PathKind::Share) {
        return Fail(ErrorBadNetworkPath);
    }
    return DriveFolder(full.root, start);
}

// What this system would take for more than one step.
bool IsPath(std::u16string_view name) {
    return name == u"." || name == u".." || name.find(u'/') != std::u16string_view::npos;
}

bool CanBeName(std::u16string_view name) {
    return std::all_of(name.begin(), name.end(), [](char16_t c) {
        const bool refused = std::u16string_view(u"<>:\"\\|?*").find(c) != std::u16string_view::npos;
        return c >= u' ' && c != EscapedBackslash && !refused;
    });
}

// Whether a name other than this one can equal it but for case: not if it has neither a letter nor a character beyond
// ASCII.
bool HasOtherSpellings(std::u16string_view name) {
    return std::any_of(name.begin(), name.end(), [](char16_t c) {
        return c >= 0x80 || (UpcaseCharacter(c) >= u'A' && UpcaseCharacter(c) <= u'Z');
    });
}

// Whether an entry equals a name but for case. Most entries are plain ASCII, and differ in length alone.
bool IsSpelling(std::string_view entry, std::u16string_view name) {
    if (!std::all_of(entry.begin(), entry.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
        return NamesEqual(WideName(entry), name);
    }
    return std::equal(entry.begin(), entry.end(), name.begin(), name.end(), [](char x, char16_t y) {
        return UpcaseCharacter(static_cast<char16_t>(x)) == UpcaseCharacter(y);
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
            below.append(below.empty() ? "" : "/").append(EntryName(name));
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
        location.name = EntryName(name);
        location.requestedName = location.name;
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
        if (IsPath(name)) {
            error = ErrorInvalidName;
            return;
        }
        if (Look()) {
            return;
        }
        if (errno == ENOENT && FindSpelling(name) && Look()) {
            return;
        }
        if (error == 0 && errno != ENOENT) {
            error = WindowsErrorCode(errno);
        } else if (error == 0 && !CanBeName(name)) {
            error = ErrorInvalidName;
        }
    }

    // The entry that equals `name` but for case; false with errno ENOENT if there is none. A folder that may not be
    // read, where exact names are found all the same, has none.
    bool FindSpelling(std::u16string_view name) {
        if (HasOtherSpellings(name)) {
            Listing listing(location.folder.Get());
            while (const char* entry = listing.Next()) {
                if (IsSpelling(entry, name)) {
                    location.name = entry;
                    return true;
                }
            }
            error = listing.Error() == ErrorAccessDenied ? 0 : listing.Error();
        }
        errno = ENOENT;
        return false;
    }

    Location& location;
    bool asItStands;
    std::uint32_t error = 0;
};

// The error that stands in the way of the name, 0 if none; false when there is no native path at all.
bool WalkTo(FullPath full, bool asItStands, Location& location, std::uint32_t& error) {
    std::string start;
    if (!TakeStart(full, start)) {
        return false;
    }
    location = Location();
    Walk walk(location, start, asItStands);
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

bool WalkTo(std::u16string_view path, Location& location, std::uint32_t& error) {
    FullPath full;
    return ParsePath(path, full) && WalkTo(std::move(full), path.starts_with(AsItStands), location, error);
}

// Whether something has the name that a path has after `index` others.
bool IsThere(FullPath full, std::size_t index) {
    full.parts.resize(index + 1);
    Location location;
    std::uint32_t error = 0;
    return WalkTo(std::move(full), true, location, error) && error == 0 && location.exists;
}

} // namespace

bool Location::IsFolder() const {
    struct stat target {};
    return exists && fstatat(folder.Get(), name.c_str(), &target, 0) == 0 && S_ISDIR(target.st_mode);
}

bool ResolveFullPath(std::u16string_view path, FullPath& full) {
    if (!ParseFullPath(path, full)) {
        return false;
    }
    for (std::size_t i = 0; i < full.parts.size(); ++i) {
        std::u16string& part = full.parts[i];
        const bool last = i + 1 == full.parts.size() && !full.closed;
        const std::size_t length = WithoutClosingDots(part, last).size();
        if (length < part.size() && !IsThere(full, i)) {
            part.resize(length);
        }
    }
    if (!full.parts.empty() && full.parts.back().empty()) {
        full.parts.pop_back(); // it had nothing else, and the separator before it closes the path
        full.closed = true;
    }
    return true;
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

} // namespace Platform
