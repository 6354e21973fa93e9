// Objects of classes whose `new` gives null when memory is exhausted: the file objects and directories of the two file
// systems, and the exceptions (raising.h, errors.cpp).
#pragma once

#include "foundation/inc/errorsfwd.h"
#include <memory>
#include <utility>

namespace Tsx {

/// A new object; raises CMemoryException, and takes nothing over from its arguments then.
template <class T, class... TArguments>
std::unique_ptr<T> MakeObject(TArguments&&... arguments) {
    std::unique_ptr<T> object(new T(std::forward<TArguments>(arguments)...));
    if (!object) {
        GenerateMemoryException();
    }
    return object;
}

} // namespace Tsx
