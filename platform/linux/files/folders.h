// Folders as such: what they hold, and their own way to the disk.
#pragma once

#include <cstdint>
#include <dirent.h>
#include <memory>
#include <string>

namespace Platform {

/// The entries of a folder in the file system's order, "." and ".." with them.
class Listing {
public:
    /// `folder` may be a metadata handle.
    explicit Listing(int folder);

    /// The next name, valid until the next call; null at the end and after a failure, which Error tells apart.
    const char* Next();
    /// The Windows code of the failure that ended the listing, also of the opening; 0 if none did.
    std::uint32_t Error() const { return error; }

private:
    std::unique_ptr<DIR, int (*)(DIR*)> stream;
    std::uint32_t error = 0;
};

/// Brings the names in a folder to the disk; the descriptor may be a metadata handle. True where the file system or the
/// folder's permissions leave nothing to do, false with the last error set when the disk fails.
bool FlushFolder(int folder);

/// The same for a folder by its native path.
bool FlushFolder(const std::string& path);

/// Makes a folder with those on the way to it, for the user alone; one that is there is fine. False with the last error
/// set.
bool MakeFolders(const std::string& path);

} // namespace Platform
