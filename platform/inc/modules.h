// Loaded programs and libraries.
#pragma once

#include "platform/inc/types.h"
#include <cstdint>

namespace Platform {

constexpr std::uint32_t LoadWithAlteredSearchPath = 8; // LOAD_WITH_ALTERED_SEARCH_PATH

/// Loads a library; null on failure. Each success is matched by one FreeLibrary.
/// A plain name is searched in the program's folder, the system folder, the current folder and the folders of PATH, in
/// this order. On Linux a name ending in ".dll" is looked up as given and then with ".so", and the system folder is
/// that of the shipped modules.
Module LoadLibraryEx(const char16_t* name, std::uint32_t flags);
/// The same for a narrow path in the ANSI code page, without flags.
Module LoadLibraryA(const char* path);
bool FreeLibrary(Module module);

/// From now on plain names are searched in this folder too, behind that of the program and in place of the current one;
/// null takes that back. Fails with 87 for a name that no folder can have.
bool SetDllDirectory(const char16_t* folder);

/// The folder of the system's own libraries, without a closing separator, with the protocol of GetFullPathName.
std::uint32_t GetSystemDirectory(char16_t* buffer, std::uint32_t size);

/// The entry point of that exact name, or null.
Procedure GetProcAddress(Module module, const char* name);

/// The module of that name among those loaded, by its file name or its path; null if it is not loaded. It is not
/// counted and not to be freed. On Linux a name ending in ".dll" stands for the one with ".so" too.
Module GetModuleHandle(const char16_t* name);
/// The same, counted: a success is matched by one FreeLibrary. `flags` is 0.
bool GetModuleHandleEx(std::uint32_t flags, const char16_t* name, Module& module);

/// The program's own module; not to be freed.
Module GetProgramModule();

/// Writes the path of a module (null: the program), terminated and cut to `size` characters, and returns the length
/// written without the terminator; `size` when it was cut (last error 122), 0 on failure.
std::uint32_t GetModuleFileName(Module module, char16_t* buffer, std::uint32_t size);

} // namespace Platform
