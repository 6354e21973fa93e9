// Windows paths on this system. Drive Z: is the root folder and the current drive; drive X: is the folder that the
// environment variable TESSARIX_DRIVE_X names. Both separators count. A name is looked up exactly first, then without
// regard to case, and then without the closing dots and blanks that no name has on Windows.
//
//   /home/u/a.txt, \home\u\a.txt, Z:\home\u\a.txt   the file /home/u/a.txt
//   a\b, Z:a\b                                      a/b in the current folder
//   C:\a, C:a, with TESSARIX_DRIVE_C=/srv/c         /srv/c/a
//   C:\a.\b. .                                      the names as they stand where such files are, else C:\a\b
//   \\?\C:\a. .                                     "a. ." there: a name behind this prefix is taken as it stands
//   \\server\share\a, \\?\UNC\server\share\a        fails with ERROR_BAD_NETPATH
//
// A character that Windows has in no name (a colon, say) is refused in a name to be made and found in one that is
// there. The limits are those of this system: no path is too long for its length, a name is when it has more than 255
// characters or bytes.
#pragma once

#include "platform/linux/descriptor.h"
#include "platform/linux/files/fullpath.h"
#include <cstdint>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace Platform {

/// A file or folder by the folder that holds it, so that a look at it and what follows mean the same one whatever
/// becomes of the path meanwhile.
struct Location {
    Descriptor folder;         // metadata handle of the folder that holds the name
    std::string name;          // as it is spelled there; "." of a root
    std::string requestedName; // as the path spells it
    std::string native;        // the whole native path
    bool isRoot = false;       // of a drive
    bool closed = false;       // the path ends in a separator: it means a folder
    bool tooLong = false;      // a name on the way has more than 255 characters
    bool exists = false;       // the name is there,
    struct stat status {};     // and this is it, a link not followed

    bool IsLink() const { return exists && S_ISLNK(status.st_mode); }
    /// A link to a folder is a folder.
    bool IsFolder() const;
};

/// The full form of a path with each name as it is to be looked up: as it stands where something has that name, else
/// without its closing dots and blanks. False, with the last error set, as ParseFullPath.
bool ResolveFullPath(std::u16string_view path, FullPath& full);

/// Finds the folder that holds a name, and the name itself if it is there. False, with the last error set, for a path
/// that nothing maps, a missing folder on the way, and a name that cannot be.
bool Locate(std::u16string_view path, Location& location);

/// The same for a name that must be there: ERROR_FILE_NOT_FOUND if it isn't. A closing separator behind a file is
/// ERROR_INVALID_NAME.
bool LocateExisting(std::u16string_view path, Location& location);

/// The native path of an existing file or folder, or the one at which it would be made. False, with the last error set,
/// for a path that nothing maps or that is empty.
bool MapPath(std::u16string_view path, std::string& native);

} // namespace Platform
