// The one call of the system's loader.
#pragma once

#include "platform/inc/types.h"

namespace Tsx {

/// Loads a library by the name as it stands; its own dependencies are found beside a complete name. The calling
/// thread's CThreadErrorMode is as before afterwards: a library's start-up code may run foundation code of its own and
/// change it. Null with the last error on failure.
Platform::Module LoadLibraryInThisMode(const char16_t* name);

} // namespace Tsx
