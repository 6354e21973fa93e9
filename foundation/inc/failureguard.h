// What is done with a failure where nobody above can take it: it is shown, or dropped where nobody misses the work, and
// what follows goes on. Destructors, the stages of start and stop, and the program's main guard use it.
#pragma once

#include "foundation/inc/errors.h"
#include <new>

namespace Tsx {

/// Takes over a caught exception, shows it through DisplayException and deletes it. What cannot be shown there goes to
/// the last resort: the exception's own text, or that of exhausted memory if even the text cannot be had.
void ShowAndDelete(CException* exception) noexcept;

/// Runs an action. A CException that it raises is shown, exhausted memory of the standard library too; the answer then
/// is false. Any other exception passes.
template <class TAction>
bool RunAndShowFailure(TAction action) {
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

/// Runs an action that nobody misses, and deletes a CException that it raises. The answer then is false.
template <class TAction>
bool RunSilently(TAction action) {
    try {
        action();
        return true;
    } catch (CException* exception) {
        delete exception;
    }
    return false;
}

/// The same as RunAndShowFailure for a destructor's work: nothing leaves it.
template <class TAction>
void GuardDestructor(TAction action) noexcept {
    RunAndShowFailure(action);
}

} // namespace Tsx
