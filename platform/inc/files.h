// Files by handle. Paths are terminated, in Windows syntax; the Linux layer maps them (see its paths.h).
#pragma once

#include "platform/inc/fileattributes.h"
#include "platform/inc/types.h"
#include <cstdint>

namespace Platform {

constexpr std::uint32_t GenericRead = 0x80000000;  // GENERIC_READ
constexpr std::uint32_t GenericWrite = 0x40000000; // GENERIC_WRITE

constexpr std::uint32_t FileShareRead = 1;   // FILE_SHARE_READ
constexpr std::uint32_t FileShareWrite = 2;  // FILE_SHARE_WRITE
constexpr std::uint32_t FileShareDelete = 4; // FILE_SHARE_DELETE: the name may go or change while the file is open

constexpr std::uint32_t CreateNew = 1;        // CREATE_NEW: fails with 80 on a name that is there
constexpr std::uint32_t CreateAlways = 2;     // CREATE_ALWAYS
constexpr std::uint32_t OpenExisting = 3;     // OPEN_EXISTING
constexpr std::uint32_t OpenAlways = 4;       // OPEN_ALWAYS
constexpr std::uint32_t TruncateExisting = 5; // TRUNCATE_EXISTING

constexpr std::uint32_t FileFlagBackupSemantics = 0x02000000; // FILE_FLAG_BACKUP_SEMANTICS: folders open too
constexpr std::uint32_t FileFlagSequentialScan = 0x08000000;  // FILE_FLAG_SEQUENTIAL_SCAN
constexpr std::uint32_t FileFlagRandomAccess = 0x10000000;    // FILE_FLAG_RANDOM_ACCESS
constexpr std::uint32_t FileFlagWriteThrough = 0x80000000;    // FILE_FLAG_WRITE_THROUGH

constexpr std::uint32_t FileBegin = 0;   // FILE_BEGIN
constexpr std::uint32_t FileCurrent = 1; // FILE_CURRENT
constexpr std::uint32_t FileEnd = 2;     // FILE_END

constexpr std::uint32_t InvalidSetFilePointer = 0xFFFFFFFF; // INVALID_SET_FILE_POINTER
constexpr std::uint32_t InvalidFileSize = 0xFFFFFFFF;       // INVALID_FILE_SIZE

constexpr std::uint32_t FileTypeUnknown = 0;     // FILE_TYPE_UNKNOWN
constexpr std::uint32_t FileTypeDisk = 1;        // FILE_TYPE_DISK
constexpr std::uint32_t FileTypeChar = 2;        // FILE_TYPE_CHAR
constexpr std::uint32_t FileTypePipe = 3;        // FILE_TYPE_PIPE
constexpr std::uint32_t FileTypeRemote = 0x8000; // FILE_TYPE_REMOTE

/// Opens or makes a file; the caller closes the handle. InvalidHandle() on failure.
///
///   access         a sum of the Generic bits; 0 opens for questions about the file alone
///   share          a sum of the FileShare bits: what other handles to the file may do while this one is open, those
///                  before it and those after it. What conflicts fails with 32
///   security       null
///   disposition    what is done with a name that is there and with one that isn't:
///                                     there                          not there
///                  CreateNew          80                             made
///                  CreateAlways       emptied, last error 183        made
///                  OpenExisting       opened                         2
///                  OpenAlways         opened, last error 183         made
///                  TruncateExisting   emptied (wants GenericWrite)   2
///   attributes     the attributes of a file that is made or emptied, and FileFlag bits. A hidden or system file is
///                  emptied only by a call that repeats these bits, else 5; a read-only one is not (5)
///   templateFile   null, or a file
///
/// Success sets the last error too: 0, or 183 as above. A missing folder on the way is 3, a folder in place of the file
/// 5.
Handle CreateFile(const char16_t* path, std::uint32_t access, std::uint32_t share, void* security,
                  std::uint32_t disposition, std::uint32_t attributes, Handle templateFile);
/// The handle is closed even where closing fails.
bool CloseHandle(Handle handle);

/// Reads at most `count` bytes at the file's position. True with `read` 0 is the end of the file.
bool ReadFile(Handle file, void* buffer, std::uint32_t count, std::uint32_t& read);
bool WriteFile(Handle file, const void* buffer, std::uint32_t count, std::uint32_t& written);

/// Moves the position by a signed distance, of which `distance` is the low word and `*distanceHigh` the high one, as
/// `method` (FileBegin, FileCurrent, FileEnd) says. Returns the low word of the new position; its high word replaces
/// `*distanceHigh`. With `distanceHigh` null the distance has 32 bits, and so must the new position (else 87).
/// InvalidSetFilePointer is a failure only if the last error is not 0.
std::uint32_t SetFilePointer(Handle file, std::int32_t distance, std::int32_t* distanceHigh, std::uint32_t method);
/// The same in one number; `position` is the new one.
bool SetFilePointerEx(Handle file, std::int64_t distance, std::int64_t& position, std::uint32_t method);

/// Cuts or extends the file to its position.
bool SetEndOfFile(Handle file);

/// The low word of the size; the high one goes to `*sizeHigh` unless that is null. InvalidFileSize is a failure only if
/// the last error is not 0.
std::uint32_t GetFileSize(Handle file, std::uint32_t* sizeHigh);

/// Times as in FileAttributeData. A null argument leaves that time alone, and so does the value 0. Wants a handle with
/// GenericWrite.
bool SetFileTime(Handle file, const std::int64_t* creation, const std::int64_t* lastAccess,
                 const std::int64_t* lastWrite);

/// What was written has reached the medium. Wants a handle with GenericWrite.
bool FlushFileBuffers(Handle file);

/// FileTypeDisk, FileTypeChar, FileTypePipe, or FileTypeUnknown; FileTypeRemote may be added.
std::uint32_t GetFileType(Handle file);

} // namespace Platform
