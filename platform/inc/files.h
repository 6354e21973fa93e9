// Files by handle, and the search by name. Paths are terminated, in Windows syntax; the Linux layer maps them (see its
// paths.h).
#pragma once

#include "platform/inc/types.h"
#include <cstdint>

namespace Platform {

constexpr std::uint32_t GenericRead = 0x80000000;      // GENERIC_READ
constexpr std::uint32_t GenericWrite = 0x40000000;     // GENERIC_WRITE
constexpr std::uint32_t FileShareRead = 1;             // FILE_SHARE_READ
constexpr std::uint32_t FileShareWrite = 2;            // FILE_SHARE_WRITE
constexpr std::uint32_t OpenExisting = 3;              // OPEN_EXISTING
constexpr std::uint32_t FileAttributeDirectory = 0x10; // FILE_ATTRIBUTE_DIRECTORY
constexpr std::uint32_t FileAttributeNormal = 0x80;    // FILE_ATTRIBUTE_NORMAL

constexpr std::uint32_t FileBegin = 0;   // FILE_BEGIN
constexpr std::uint32_t FileCurrent = 1; // FILE_CURRENT
constexpr std::uint32_t FileEnd = 2;     // FILE_END

constexpr std::uint32_t FileTypeUnknown = 0;     // FILE_TYPE_UNKNOWN
constexpr std::uint32_t FileTypeDisk = 1;        // FILE_TYPE_DISK
constexpr std::uint32_t FileTypeChar = 2;        // FILE_TYPE_CHAR
constexpr std::uint32_t FileTypePipe = 3;        // FILE_TYPE_PIPE
constexpr std::uint32_t FileTypeRemote = 0x8000; // FILE_TYPE_REMOTE

constexpr std::uint32_t SemFailCriticalErrors = 0x0001; // SEM_FAILCRITICALERRORS
constexpr std::uint32_t SemNoOpenFileErrorBox = 0x8000; // SEM_NOOPENFILEERRORBOX

/// Opens an existing file for reading; the caller closes the handle. Access, share mode and the rest of the Windows
/// arguments come with the native file objects. InvalidHandle() on failure.
Handle CreateFile(const char16_t* path, std::uint32_t access, std::uint32_t share, std::uint32_t disposition,
                  std::uint32_t attributes);
bool CloseHandle(Handle handle);

/// Reads at most `count` bytes at the file's position. True with `read` 0 is the end of the file.
bool ReadFile(Handle file, void* buffer, std::uint32_t count, std::uint32_t& read);
bool WriteFile(Handle file, const void* buffer, std::uint32_t count, std::uint32_t& written);

/// Moves the position by `distance` bytes as `method` (FileBegin, FileCurrent, FileEnd) says; `position` is the new
/// one.
bool SetFilePointerEx(Handle file, std::int64_t distance, std::int64_t& position, std::uint32_t method);

/// FileTypeDisk, FileTypeChar, FileTypePipe, or FileTypeUnknown; FileTypeRemote may be added.
std::uint32_t GetFileType(Handle file);

/// What a search tells of one entry. `name` is terminated.
struct FindData {
    std::uint32_t attributes = 0;
    char16_t name[260] = {};
};

/// Starts a search for a path whose last component may hold wildcards; InvalidHandle() when nothing is found. Ended by
/// FindClose.
Handle FindFirstFile(const char16_t* path, FindData& data);
bool FindClose(Handle search);

/// Sets the process's error mode (a sum of the Sem bits) and returns the one before.
std::uint32_t SetErrorMode(std::uint32_t mode);

} // namespace Platform
