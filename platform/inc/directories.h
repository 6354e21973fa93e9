// Folders, searches in them, drives. Paths are terminated, in Windows syntax.
#pragma once

#include "platform/inc/fileattributes.h"
#include "platform/inc/types.h"
#include <cstdint>

namespace Platform {

constexpr std::uint32_t DriveUnknown = 0;   // DRIVE_UNKNOWN
constexpr std::uint32_t DriveNoRootDir = 1; // DRIVE_NO_ROOT_DIR
constexpr std::uint32_t DriveRemovable = 2; // DRIVE_REMOVABLE
constexpr std::uint32_t DriveFixed = 3;     // DRIVE_FIXED
constexpr std::uint32_t DriveRemote = 4;    // DRIVE_REMOTE
constexpr std::uint32_t DriveCdRom = 5;     // DRIVE_CDROM
constexpr std::uint32_t DriveRamDisk = 6;   // DRIVE_RAMDISK

/// What a search tells of one entry. `name` is terminated.
struct FindData : FileAttributeData {
    char16_t name[260] = {};
};

/// Starts a search for a path whose last component may hold wildcards (wildcards.h of the Linux layer has the rules);
/// InvalidHandle() with last error 2 when nothing is found. A pattern finds "." and ".." too, except in a root. Ended
/// by FindClose. One search serves one thread at a time.
Handle FindFirstFile(const char16_t* path, FindData& data);
/// The next entry; false with last error 18 when there is none.
bool FindNextFile(Handle search, FindData& data);
bool FindClose(Handle search);

/// Makes one folder, the last of the path. Fails with 183 if the name is there, with 3 if its parent isn't.
bool CreateDirectory(const char16_t* path, void* security);
/// Removes an empty folder. Fails with 145 on one that isn't empty, with 267 on a file, with 5 on a read-only one.
bool RemoveDirectory(const char16_t* path);

/// Bytes free to the caller, in all, and free in all, on the volume of a folder. Null arguments are left out; a null
/// path is the current folder.
bool GetDiskFreeSpaceEx(const char16_t* path, std::uint64_t* freeToCaller, std::uint64_t* total,
                        std::uint64_t* totalFree);
/// One of the Drive values for a root such as "C:\"; null is that of the current folder. DriveNoRootDir for what is no
/// root of a drive that is there.
std::uint32_t GetDriveType(const char16_t* root);

} // namespace Platform
