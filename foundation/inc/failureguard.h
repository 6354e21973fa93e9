// What is done with a failure where nobody above can take it: it is shown, and the work goes on. Destructors, the
// stages of start and stop, and the program's main guard use it.
#pragma once

#include "foundation/inc/errors.h"
#include <new>

namespace Tsx {

/// Takes over a caught exception, shows it through DisplayException and deletes it. What cannot be shown there goes to
/// the last resort: the exception's own text, or that of exhausted memory if even the text cannot be had.
void ShowAndDelete(CException* exception) noexcept;

/// Runs the action. A CException that it raises is shown, exhausted memory of the standard library too; the answer then
/// is false. Any other exception passes.
template <class TAction>
bool ShowFailure(TAction action) {
    try {
        action();
        return true;
    } catch (CException* exception) {
        ShowAndDelete(exception);
    } catch (const std::bad_alloc&) {
        ShowLastResort(NotEnoughMemoryText);
    }
    return false;
}

/// The same for destructors: nothing leaves them.
template <class TAction>
void GuardDestructor(TAction action) noexcept {
    ShowFailure(action);
}

} // namespace Tsx
