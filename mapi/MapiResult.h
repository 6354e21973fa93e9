// The one rule for results and pointers that the MAPI library hands out, for all of mapi/.
#pragma once

#include "mapi/MapiRecords.h"

namespace Mapi {

/// Returns after success. E_OUTOFMEMORY raises CMemoryException, any other failure CCOMException with that code.
void CheckResult(std::int32_t result);

/// The pointer itself. Null raises CCOMException with E_POINTER, also where the call that should have given it reported
/// success.
template <class T>
T* Required(T* pointer) {
    if (!pointer) {
        CheckResult(ResultPointer);
    }
    return pointer;
}

} // namespace Mapi
