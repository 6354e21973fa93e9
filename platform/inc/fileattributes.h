// What the system keeps of a file or folder besides its content.
#pragma once

#include <cstdint>

namespace Platform {

constexpr std::uint32_t FileAttributeReadOnly = 0x1;        // FILE_ATTRIBUTE_READONLY
constexpr std::uint32_t FileAttributeHidden = 0x2;          // FILE_ATTRIBUTE_HIDDEN
constexpr std::uint32_t FileAttributeSystem = 0x4;          // FILE_ATTRIBUTE_SYSTEM
constexpr std::uint32_t FileAttributeDirectory = 0x10;      // FILE_ATTRIBUTE_DIRECTORY
constexpr std::uint32_t FileAttributeArchive = 0x20;        // FILE_ATTRIBUTE_ARCHIVE
constexpr std::uint32_t FileAttributeNormal = 0x80;         // FILE_ATTRIBUTE_NORMAL: no other bit is set
constexpr std::uint32_t FileAttributeTemporary = 0x100;     // FILE_ATTRIBUTE_TEMPORARY
constexpr std::uint32_t FileAttributeReparsePoint = 0x400;  // FILE_ATTRIBUTE_REPARSE_POINT: a link
constexpr std::uint32_t InvalidFileAttributes = 0xFFFFFFFF; // INVALID_FILE_ATTRIBUTES

/// One file or folder. Times count 100 ns from 1601 in UTC, as FILETIME does; one that the system cannot tell is 0.
/// `size` is in bytes, of no meaning for a folder.
struct FileAttributeData {
    std::uint32_t attributes = 0;
    std::int64_t creationTime = 0;
    std::int64_t lastAccessTime = 0;
    std::int64_t lastWriteTime = 0;
    std::int64_t size = 0;
};

} // namespace Platform
