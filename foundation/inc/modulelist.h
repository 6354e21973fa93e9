// The modules that the foundation has loaded, and the functions that modules want called at its start and stop, which
// calls them. Archives load the modules of classes here, the resource base its libraries.
#pragma once

#include "foundation/inc/unicodestring.h"
#include "platform/inc/types.h"

namespace Tsx {

using CModuleFunction = void (*)();

/// A module of the list. The list changes under the foundation's lock.
struct CModuleEntry {
    Platform::Module handle = nullptr;
    std::int32_t loadCount = 0;          // how many times it was loaded through TryLoadModule
    CModuleFunction initEntry = nullptr; // or null
    CModuleFunction termEntry = nullptr; // or null
    bool initialized = false;
    bool isStatic = false; // linked in, not to be unloaded
};

/// Loads a library by the name as it stands; its own dependencies are found beside a complete name. The calling
/// thread's CThreadErrorMode is as before afterwards: a library's start-up code may run foundation code of its own and
/// change it. Null with the last error on failure.
Platform::Module LoadLibraryInThisMode(const char16_t* name);

/// The same with a search. A complete name (one that begins with a drive and a root, or like a UNC name) is used as it
/// stands; any other is looked for in the library search path, if there is one, and where the system looks for
/// libraries. Null with the last error if it isn't found or can't be loaded. Each success is matched by one
/// FreeLibrary.
Platform::Module LoadLibrarySearched(const char16_t* name);

/// Loads a library for as long as the foundation stands: the stop unloads it. While the foundation stands its entry is
/// called at once. Null with the last error on failure.
Platform::Module TryLoadModule(const char16_t* name);
/// The same; raises ERR_CANT_LOAD_DLL on failure.
Platform::Module LoadModule(const char16_t* name);

/// Adds a module that is linked in; for its static construction. Both functions may be null.
void AddStaticModule(Platform::Module handle, CModuleFunction initEntry, CModuleFunction termEntry);

/// Calls the entries of the modules that are not initialised yet, first to last. A failure of one is shown and ends the
/// walk: false. That module counts as initialised all the same.
bool InitializeModules();
/// Calls the closing entries, last to first, and unloads what TryLoadModule loaded. Failures are shown.
void TerminateModules();

} // namespace Tsx
