// What tests of the foundation share: strings in failure messages, and the catching of exceptions that are thrown as
// pointers.
#pragma once

#include "foundation/inc/errors.h"
#include "foundation/inc/unicodestring.h"
#include "platform/inc/faults.h"
#include <functional>
#include <gtest/gtest.h>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>

namespace Tsx {

void PrintTo(const CUnicodeString& text, std::ostream* stream);

} // namespace Tsx

/// A text readable in a failure message, whatever it holds.
std::string Readable(std::u16string_view text);

/// The first line of a test that makes functions fail: without the hook it has nothing to do.
#define SKIP_WITHOUT_FAULTS()                                                                                          \
    if (!Platform::FaultsAvailable())                                                                                  \
    GTEST_SKIP() << "this build has no fault hook"

/// What an internal error that an action raised tells: its file and line, as in "inc\\map 352"; "none" without one.
template <class TAction>
std::string InternalErrorOf(TAction action);

/// Runs an action and returns what it raised, if that is of the class asked for; null otherwise.
template <class TException, class TAction>
std::unique_ptr<TException> Raised(TAction action) {
    try {
        action();
    } catch (Tsx::CException* exception) {
        std::unique_ptr<Tsx::CException> owner(exception);
        if (auto* wanted = dynamic_cast<TException*>(exception)) {
            static_cast<void>(owner.release());
            return std::unique_ptr<TException>(wanted);
        }
        ADD_FAILURE() << "raised something else: " << Readable(exception->GetMessageText().View());
    }
    return nullptr;
}

template <class TAction>
std::string InternalErrorOf(TAction action) {
    const auto error = Raised<Tsx::CInternalError>(action);
    return error ? Readable(error->file) + ' ' + std::to_string(error->line) : "none";
}

/// Every call is an internal error of that line of `file`.
inline void ExpectInternalErrors(const std::string& file,
                                 std::initializer_list<std::pair<std::int32_t, std::function<void()>>> calls) {
    for (const auto& [line, call] : calls) {
        EXPECT_EQ(InternalErrorOf(call), file + ' ' + std::to_string(line));
    }
}
