// System libraries other than kernel32 are bound when first called, from the system folder alone: a run that doesn't
// need one never loads it, and a library of the same name planted elsewhere is not found.
#pragma once

#include "platform/inc/types.h"

namespace Platform {

/// The entry `name` of the system library `library`; null with the last error set if one of the two is missing. The
/// library stays loaded for the life of the process.
Procedure SystemProcedure(const char16_t* library, const char* name);

/// The same with the entry's type taken from its declaration: SystemProcedure<decltype(::MessageBoxW)>(u"user32.dll",
/// "MessageBoxW").
template <class TFunction>
TFunction* SystemProcedure(const char16_t* library, const char* name) {
    return reinterpret_cast<TFunction*>(SystemProcedure(library, name));
}

} // namespace Platform
