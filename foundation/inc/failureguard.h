// What is done with a failure where nobody above can take it: it is shown, and the work goes on.
#pragma once

#include "foundation/inc/messagehandlers.h"

namespace Tsx {

/// Runs the action; a CException that it raises is shown and deleted, and the answer is false.
template <class TAction>
bool ShowFailure(TAction action) {
    try {
        action();
        return true;
    } catch (CException* exception) {
        DisplayException(exception);
        delete exception;
        return false;
    }
}

/// The same for destructors: nothing leaves them.
template <class TAction>
void GuardDestructor(TAction action) noexcept {
    ShowFailure(action);
}

} // namespace Tsx
