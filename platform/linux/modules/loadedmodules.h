// Which modules are loaded, by the loader's own list.
#pragma once

#include "platform/inc/types.h"

namespace Platform {

/// Whether a handle still stands for a module: a library that has gone leaves a handle that the loader must not be
/// asked about. Null is the program itself.
bool IsLoaded(Module module);

/// The function of that name that some loaded module exports, whoever loaded it; null if none does.
void* FindExport(const char* name);

} // namespace Platform
