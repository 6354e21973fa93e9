// Attributes and times of files on this system. The read-only attribute of a file is its owner's missing permission to
// write. What the system has no place for is kept in extended attributes, where the file system has these:
//
//   user.tessarix.attributes   hidden, system, archive, temporary, of a folder read-only too, as "0x26"
//   user.tessarix.created      a creation time that was set, as a decimal FILETIME count
//   user.tessarix.writers      the permissions to write that the read-only attribute took away, as "0x92"
//
// A file without them has the archive attribute, as one on Windows that nobody touched, and one whose name begins with
// a dot is hidden besides, as every program here takes it.
#pragma once

#include "platform/inc/fileattributes.h"
#include <cstdint>
#include <string>
#include <sys/stat.h>

namespace Platform {

/// Both directions of the system's clock values; what lies before 1601 is 0.
std::int64_t FileTimeOf(std::int64_t seconds, std::int64_t nanoseconds);
timespec NativeTimeOf(std::int64_t fileTime);

/// Everything of an open file of that name; the descriptor may be one for questions alone (O_PATH). False with errno
/// set.
bool ReadFileInfo(int descriptor, const std::string& name, FileAttributeData& data);

/// The same for an entry of a folder. A link has the attributes of its target and is marked as a link, but is never
/// read-only: it can always be removed. A link without a target is a file of its own.
bool ReadEntryInfo(int folder, const std::string& name, FileAttributeData& data);

/// The bits that were set by someone, without what follows from the name alone.
std::uint32_t StoredAttributes(int descriptor);

/// Sets the bits that can be set and clears the others of them. False, with the last error set, where one of hidden and
/// system cannot be kept.
bool StoreAttributes(int descriptor, const std::string& name, std::uint32_t attributes);

/// Keeps a creation time; without effect where there is no place for it.
void StoreCreationTime(int descriptor, std::int64_t fileTime);

} // namespace Platform
