// String resources and version records of modules.
#pragma once

#include "platform/inc/types.h"
#include <cstdint>

namespace Platform {

/// VS_FIXEDFILEINFO, field for field.
struct FixedFileInfo {
    std::uint32_t dwSignature; // 0xFEEF04BD
    std::uint32_t dwStrucVersion;
    std::uint32_t dwFileVersionMS;
    std::uint32_t dwFileVersionLS;
    std::uint32_t dwProductVersionMS;
    std::uint32_t dwProductVersionLS;
    std::uint32_t dwFileFlagsMask;
    std::uint32_t dwFileFlags;
    std::uint32_t dwFileOS;
    std::uint32_t dwFileType;
    std::uint32_t dwFileSubtype;
    std::uint32_t dwFileDateMS;
    std::uint32_t dwFileDateLS;
};
static_assert(sizeof(FixedFileInfo) == 52);

constexpr std::uint32_t RtGroupIcon = 14; // RT_GROUP_ICON

/// Whether a module has the named resource of a type; case does not count. On Linux icons are the one type, and a name
/// is all that there is of one.
bool FindResource(Module module, const char16_t* name, std::uint32_t type);

/// Copies the string resource `id` of a module, terminated and cut to `size` - 1 characters; returns the length, 0 if
/// there is none.
std::int32_t LoadString(Module module, std::uint32_t id, char16_t* buffer, std::int32_t size);

/// The size in bytes of the version block of the file at `path`, 0 if it has none.
std::uint32_t GetFileVersionInfoSize(const char16_t* path);

/// Reads the version block of the file at `path` into `block`, which has room for `size` bytes.
bool GetFileVersionInfo(const char16_t* path, std::uint32_t size, void* block);

/// Finds a value in a version block of `size` bytes: "\", "\VarFileInfo\Translation" or
/// "\StringFileInfo\LLLLCCCC\Name". `value` points into the block; `length` counts characters (terminator included) for
/// strings and bytes otherwise. A null block is false. The Linux layer never reads beyond `size`; the Windows namesake
/// takes no size.
bool VerQueryValue(const void* block, std::uint32_t size, const char16_t* subBlock, const void*& value,
                   std::uint32_t& length);

} // namespace Platform
