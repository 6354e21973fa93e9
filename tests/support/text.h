// What tests of the foundation share: strings in failure messages, and the catching of exceptions that are thrown as
// pointers.
#pragma once

#include "foundation/inc/errors.h"
#include "foundation/inc/unicodestring.h"
#include "platform/inc/faults.h"
#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>

/// A text readable in a failure message, whatever it holds.
inline std::string Readable(std::u16string_view text) {
    std::string out;
    for (const char16_t c : text) {
        char shown[8] = {};
        std::snprintf(shown, sizeof(shown), c >= u' ' && c < 0x7F ? "%c" : "\\u%04X", static_cast<unsigned>(c));
        out += shown;
    }
    return out;
}

namespace Tsx {

inline void PrintTo(const CUnicodeString& text, std::ostream* stream) {
    *stream << '"' << Readable(text.View()) << '"';
}

} // namespace Tsx

/// The first line of a test that makes functions fail: without the hook it has nothing to do.
#define SKIP_WITHOUT_FAULTS()                                                                                          \
    if (!Platform::FaultsAvailable())                                                                                  \
    GTEST_SKIP() << "this build has no fault hook"

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

/// What an internal error that an action raised tells: its file and line, as in "inc\\map 352"; "none" without one.
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

/// Runs `prepare`, then `action` with the first, second ... call of a platform function failing, then `check`, until no
/// call is left to fail; both are told which it was. Returns how many of the actions raised.
template <class TPrepare, class TAction, class TCheck>
int FailEachCall(const char* function, std::uint32_t code, Platform::FaultMode mode, TPrepare prepare, TAction action,
                 TCheck check) {
    int raised = 0;
    bool reached = true;
    for (std::int32_t nth = 1; reached; ++nth) {
        prepare(nth);
        Platform::ArmFault(function, nth, code, mode);
        try {
            action();
        } catch (Tsx::CException* exception) {
            delete exception;
            ++raised;
        }
        reached = Platform::FaultCallsSeen() >= nth;
        Platform::DisarmFaults();
        check(nth);
    }
    return raised;
}
