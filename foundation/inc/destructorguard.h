// What destructors do with a failure: nothing leaves them.
#pragma once

#include "foundation/inc/messagehandlers.h"

namespace Tsx {

/// Runs the action; a CException that it raises is shown and deleted.
template <class TAction>
void GuardDestructor(TAction action) noexcept {
    try {
        action();
    } catch (CException* exception) {
        DisplayException(exception);
        delete exception;
    }
}

} // namespace Tsx
