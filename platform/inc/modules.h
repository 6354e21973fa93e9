// Loaded programs and libraries.
#pragma once

#include "platform/inc/types.h"
#include <cstdint>

namespace Platform {

constexpr std::uint32_t LoadWithAlteredSearchPath = 8; // LOAD_WITH_ALTERED_SEARCH_PATH

/// Loads a library; null on failure. Each success is matched by one FreeLibrary.
/// A plain name is searched where the system searches. On Linux that is the program's folder and the system folder, the
/// one of the shipped modules, and no other: not the current one, nor those of PATH or of the loader. A name ending in
/// ".dll" is looked up as given and then with ".so" there. A library that lacks another one fails with 126;
/// FormatMessage then adds the loader's words, which name it, to the text of the calling thread's latest failure.
Module LoadLibraryEx(const char16_t* name, std::uint32_t flags);
/// The same for a narrow path in the ANSI code page, without flags.
Module LoadLibraryA(const char* path);
bool FreeLibrary(Module module);

/// Brings the path of a library, in place, to the form in which it is loaded and told of: lower case on Windows. It
/// stays as it is on Linux, where a path in another case may be another file's.
void FoldLibraryPath(char16_t* path);

/// From now on plain names are searched in this folder too, behind that of the program and in place of the current one
/// where that is searched; null takes that back. Fails with 87 for a name that no folder can have.
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
