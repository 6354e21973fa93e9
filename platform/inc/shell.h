// Folders that the desktop keeps for a user, by their CSIDL numbers, and the memory that goes with them. The Linux
// layer gives each its nearest kin (linux/shell.cpp has the table).
#pragma once

#include "platform/inc/types.h"
#include <cstdint>

namespace Platform {

/// The system's ITEMIDLIST; given back by CoTaskMemFree.
using ItemIdList = struct ItemIdListObject;

constexpr std::int32_t CsidlFlagCreate = 0x8000; // CSIDL_FLAG_CREATE: added to a number, makes a folder that is missing

/// Writes the folder's path, terminated, without a closing separator, to a buffer of MAX_PATH (260) characters. `token`
/// null is the present user, `flags` 0 the folder's present place. The result is an HRESULT: 0 on success, 1 (S_FALSE)
/// with an empty path for a folder that has a place and isn't there, negative for a failure.
std::int32_t SHGetFolderPath(Window owner, std::int32_t folder, Handle token, std::uint32_t flags, char16_t* path);

/// The folder as an item list, which the caller gives to CoTaskMemFree. The result is an HRESULT; `list` is null on
/// failure.
std::int32_t SHGetSpecialFolderLocation(Window owner, std::int32_t folder, ItemIdList*& list);

/// Writes the path of an item list, terminated, to a buffer of MAX_PATH (260) characters. False, with an empty path,
/// for one that is no folder of the file system.
bool SHGetPathFromIDList(const ItemIdList* list, char16_t* path);

/// Releases memory that a function of the shell or of COM gave out; null is allowed.
void CoTaskMemFree(void* memory);

} // namespace Platform
