// The throw that all failures share which no mode of the thread keeps from being thrown.
#pragma once

#include "foundation/inc/makeobject.h"
#include "foundation/inc/threadobject.h"
#include <utility>

namespace Tsx {

/// Makes an exception and throws it; CMemoryException in its place where there is no room.
template <class TException, class... TArguments>
[[noreturn]] void Raise(TArguments&&... arguments) {
    const CReentryScope scope(CReentryScope::RS_Raising);
    throw MakeObject<TException>(std::forward<TArguments>(arguments)...).release();
}

} // namespace Tsx
