// The registry: keys that hold named values. On Windows it is the system's own. On Linux it is two text files in the
// form that Windows exports, HKEY_CURRENT_USER.reg and HKEY_LOCAL_MACHINE.reg, in the folder that the environment
// variable TESSARIX_REGISTRY names, or else in tessarix/registry under the configuration folders of the user and the
// system.
#pragma once

#include "platform/inc/types.h"
#include <cstdint>

namespace Platform {

/// An open key, or one of the roots: the system's HKEY.
using RegistryKey = Handle;

constexpr std::uint32_t HkeyClassesRoot = 0x80000000;        // HKEY_CLASSES_ROOT
constexpr std::uint32_t HkeyCurrentUser = 0x80000001;        // HKEY_CURRENT_USER
constexpr std::uint32_t HkeyLocalMachine = 0x80000002;       // HKEY_LOCAL_MACHINE
constexpr std::uint32_t HkeyUsers = 0x80000003;              // HKEY_USERS
constexpr std::uint32_t HkeyPerformanceData = 0x80000004;    // HKEY_PERFORMANCE_DATA
constexpr std::uint32_t HkeyCurrentConfig = 0x80000005;      // HKEY_CURRENT_CONFIG
constexpr std::uint32_t HkeyDynData = 0x80000006;            // HKEY_DYN_DATA
constexpr std::uint32_t HkeyPerformanceText = 0x80000050;    // HKEY_PERFORMANCE_TEXT
constexpr std::uint32_t HkeyPerformanceNlsText = 0x80000060; // HKEY_PERFORMANCE_NLSTEXT

/// The handle of a root: its number with the sign carried on.
inline RegistryKey RootKey(std::uint32_t number) {
    const auto value = static_cast<std::intptr_t>(static_cast<std::int32_t>(number));
    return reinterpret_cast<RegistryKey>(value); // NOLINT(performance-no-int-to-ptr): the published value
}

/// The number that a handle of a root has, with the sign carried on or without; 0 for a handle of any other kind.
inline std::uint32_t RootNumber(RegistryKey key) {
    const auto value = reinterpret_cast<std::uintptr_t>(key);
    const auto number = static_cast<std::uint32_t>(value);
    const bool isRoot = number >= HkeyClassesRoot && (value == number || key == RootKey(number));
    return isRoot ? number : 0;
}

constexpr std::uint32_t RegNone = 0;     // REG_NONE
constexpr std::uint32_t RegSz = 1;       // REG_SZ
constexpr std::uint32_t RegExpandSz = 2; // REG_EXPAND_SZ
constexpr std::uint32_t RegBinary = 3;   // REG_BINARY
constexpr std::uint32_t RegDword = 4;    // REG_DWORD
constexpr std::uint32_t RegMultiSz = 7;  // REG_MULTI_SZ
constexpr std::uint32_t RegQword = 11;   // REG_QWORD

constexpr std::uint32_t KeyQueryValue = 0x0001; // KEY_QUERY_VALUE
constexpr std::uint32_t KeySetValue = 0x0002;   // KEY_SET_VALUE
constexpr std::uint32_t KeyWow64_64 = 0x0100;   // KEY_WOW64_64KEY
constexpr std::uint32_t KeyWow64_32 = 0x0200;   // KEY_WOW64_32KEY
constexpr std::uint32_t KeyWrite = 0x20006;     // KEY_WRITE
constexpr std::uint32_t KeyRead = 0x20019;      // KEY_READ
constexpr std::uint32_t KeyReadWrite = 0x2001F; // KEY_READ | KEY_WRITE

/// All of these return a Windows code, ErrorSuccess or why not, and don't promise anything about the last error.

/// Opens the key at `path` below `key` (a root or an open key; an empty path opens another handle to the same key).
/// `opened` is closed by RegCloseKey; it is null after a failure. On Linux the view makes no difference, and there is
/// nothing below the roots that have no file: ErrorFileNotFound.
std::uint32_t RegOpenKeyEx(RegistryKey key, const char16_t* path, std::uint32_t options, std::uint32_t access,
                           RegistryKey& opened);
/// The same, but makes the key, and those on the way to it, if they are not there.
std::uint32_t RegCreateKeyEx(RegistryKey key, const char16_t* path, std::uint32_t options, std::uint32_t access,
                             RegistryKey& opened);
/// Closing a handle that is not open gives ErrorInvalidHandle; a root stays open.
std::uint32_t RegCloseKey(RegistryKey key);

/// Reads a value; null and the empty name mean the default value. `type`, `data` and `size` may be null, but not `size`
/// alone. `size` holds the bytes of room at `data` and gets those of the value; with too little room the result is
/// ErrorMoreData and nothing is copied. The bytes are those that were stored: a text may lack its terminator.
std::uint32_t RegQueryValueEx(RegistryKey key, const char16_t* name, std::uint32_t* type, void* data,
                              std::uint32_t* size);
/// The same in narrow text: name and data of the text types are in the ANSI code page.
std::uint32_t RegQueryValueExA(RegistryKey key, const char* name, std::uint32_t* type, void* data, std::uint32_t* size);
/// Writes a value. On Linux the file on the disk is then either the new one or, after a failure, the old one.
std::uint32_t RegSetValueEx(RegistryKey key, const char16_t* name, std::uint32_t type, const void* data,
                            std::uint32_t size);

} // namespace Platform
