// The one rule for results and pointers that the mail system hands out.
#pragma once

#include "mapi/MapiRecords.h"

namespace Mapi {

/// Goes on after success. E_OUTOFMEMORY raises CMemoryException, any other failure CCOMException with that code.
void CheckResult(std::int32_t result);

/// The pointer itself. Null raises CCOMException with E_POINTER: what should be there was not given, whatever the
/// call's result said.
template <class T>
T* Required(T* pointer) {
    if (!pointer) {
        CheckResult(ResultPointer);
    }
    return pointer;
}

} // namespace Mapi
