// Files by name, and names themselves. Paths are terminated, in Windows syntax. A missing file is 2, a missing folder
// on the way 3, a name that no file can have 123.
#pragma once

#include "platform/inc/fileattributes.h"
#include <cstdint>

namespace Platform {

constexpr std::uint32_t MaxPath = 260; // MAX_PATH

constexpr std::uint32_t MoveFileReplaceExisting = 0x1; // MOVEFILE_REPLACE_EXISTING
constexpr std::uint32_t MoveFileCopyAllowed = 0x2;     // MOVEFILE_COPY_ALLOWED: copy and delete across volumes
constexpr std::uint32_t MoveFileWriteThrough = 0x8;    // MOVEFILE_WRITE_THROUGH: return when it has reached the medium

/// InvalidFileAttributes on failure.
std::uint32_t GetFileAttributes(const char16_t* path);
/// Everything at once: the standard level of information.
bool GetFileAttributesEx(const char16_t* path, FileAttributeData& data);
/// Sets the read-only, hidden, system, archive and temporary bits; FileAttributeNormal clears them. Other bits are
/// ignored.
bool SetFileAttributes(const char16_t* path, std::uint32_t attributes);

/// Fails with 5 on a folder and on a read-only file, with 32 on one that is open without FileShareDelete.
bool DeleteFile(const char16_t* path);

/// Copies content, attributes and last write time. A target that exists fails with 80 if `failIfExists`; it fails with
/// 5 if it is read-only or hidden or a folder, with 32 if it is open. A copy that fails later leaves no target.
bool CopyFile(const char16_t* source, const char16_t* target, bool failIfExists);

/// Renames a file or folder; a file may change the volume. A target that exists fails with 183.
bool MoveFile(const char16_t* source, const char16_t* target);
/// The same with a sum of the MoveFile bits. Across volumes without MoveFileCopyAllowed it fails with 17; a target that
/// is a folder, read-only or open is not replaced (5).
bool MoveFileEx(const char16_t* source, const char16_t* target, std::uint32_t flags);

/// Writes the absolute form of a path, terminated, and returns its length without the terminator. If `size` characters
/// hold no more than that length, nothing is written and the result is the size that is needed, terminator included. 0
/// on failure. `*filePart` (unless null) points to the last component in the buffer; null if there is none.
std::uint32_t GetFullPathName(const char16_t* path, std::uint32_t size, char16_t* buffer, char16_t** filePart);

/// Looks for `file`, with `extension` added where it has none (null: none is added), in the folders of `path`, which
/// `;` separates; null means the program's folder, the system's folders, and on Windows the current folder and those of
/// the variable PATH. A name with a drive or a root is looked up as it stands. Result as of GetFullPathName; 0 with
/// last error 2 if there is no such file, and 87 for an empty name.
std::uint32_t SearchPath(const char16_t* path, const char16_t* file, const char16_t* extension, std::uint32_t size,
                         char16_t* buffer, char16_t** filePart);

} // namespace Platform
