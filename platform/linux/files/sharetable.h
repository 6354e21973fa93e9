// Share modes. A handle states what it does (read, write) and what it lets others do (read, write, delete); each pair
// of handles to one file must agree. Within the process a table by device and inode sees to it, whatever path each came
// by.
//
// Against other processes advisory locks do, as far as they reach: only between processes that run this layer, on
// regular files, and where the file system has locks by open file description. What any other program does with the
// file is neither seen nor hindered. A rename or deletion by another process of this layer is hindered in the same way.
#pragma once

#include "platform/linux/descriptor.h"
#include "platform/linux/files/sharelocks.h"
#include <forward_list>
#include <list>
#include <mutex>
#include <sys/stat.h>

namespace Platform {

struct FileKey {
    dev_t device;
    ino_t inode;

    explicit FileKey(const struct stat& status) : device(status.st_dev), inode(status.st_ino) {}
    bool operator==(const FileKey&) const = default;
};

/// A handle's entry in the table, taken out when this goes.
class ShareClaim {
public:
    ShareClaim() = default;
    ShareClaim(const ShareClaim&) = delete;
    ShareClaim& operator=(const ShareClaim&) = delete;
    ~ShareClaim();

    /// Enters the open file behind `descriptor`; false with ERROR_SHARING_VIOLATION if a handle to it disagrees. A
    /// handle that neither reads nor writes conflicts with no later one.
    bool Enter(int descriptor, const FileKey& key, const ShareUse& use);

private:
    struct Entry {
        FileKey key;
        ShareUse use;
    };
    friend class ShareTableLock;
    using Table = std::list<Entry>;
    static Table& Entries();
    Agreement Ask(int descriptor, Table& added);

    Table::iterator entry;
    bool entered = false;
};

/// Keeps handles from being opened and closed between one of the questions below and the action that relies on its
/// answer. Never held over a wait that is longer than another process takes to open a file.
class ShareTableLock {
public:
    ShareTableLock();

    /// Whether the process has the file open.
    bool IsOpen(const FileKey& key) const;
    /// Whether all handles of the process allow the name to be removed.
    bool AllowsDelete(const FileKey& key) const;
    /// Whether handles of other processes to the regular file of that name allow it to be removed: false with
    /// ERROR_SHARING_VIOLATION, or ERROR_FILE_NOT_FOUND if it has gone. While this object lives, none that doesn't is
    /// opened, and no other process of this layer takes the name away.
    bool OthersAllowDelete(int folder, const char* name);

private:
    struct Deletion {
        FileKey key;
        Descriptor file; // holds the announcement
    };

    std::lock_guard<std::mutex> guard;
    std::forward_list<Deletion> announced;

    Agreement AnnounceDeletion(int folder, const char* name);
};

} // namespace Platform
