// What tests of the foundation share: strings in failure messages, and the catching of exceptions that are thrown as
// pointers.
#pragma once

#include "foundation/inc/errors.h"
#include "foundation/inc/unicodestring.h"
#include <gtest/gtest.h>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>

namespace Tsx {

void PrintTo(const CUnicodeString& text, std::ostream* stream);

} // namespace Tsx

/// A text readable in a failure message, whatever it holds.
std::string Readable(std::u16string_view text);

/// Runs an action and returns what it raised, if that is of the class asked for; null otherwise.
template <class TException, class TAction>
std::unique_ptr<TException> Raised(TAction action) {
    try {
        action();
    } catch (Tsx::CException* exception) {
        std::unique_ptr<Tsx::CException> owner(exception);
        if (auto* wanted = dynamic_cast<TException*>(exception)) {
            owner.release();
            return std::unique_ptr<TException>(wanted);
        }
        ADD_FAILURE() << "raised something else: " << Readable(exception->GetMessageText().View());
    }
    return nullptr;
}
