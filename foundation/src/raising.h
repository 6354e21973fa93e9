// The throw behind every failure that is thrown whatever the thread's error mode says: for errors.cpp and
// sehexception.cpp.
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
