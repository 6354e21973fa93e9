// Faults of the processor in foreign code, turned into exceptions of the family. The guard stands around one call; it
// does not change what a fault means elsewhere in the process. The delivery through Extended MAPI uses it, which runs
// the mail client's code.
#pragma once

#include "foundation/inc/errors.h"
#include "platform/inc/guardedcall.h"

namespace Tsx {

/// A fault, told to the user like any other failure.
class CSehException : public CException {
public:
    /// Builds the text at once, for the record does not outlive the guarded frame.
    explicit CSehException(const Platform::ExceptionRecord& record);
    CUnicodeString GetMessageText() const override { return text; }

    CUnicodeString text;
};

/// The filter: copies the record, and returns 1 for an error, whose handler is to run, and 0 for what goes on to look
/// for another one: breakpoints, exceptions of a language, and all that is no error (warnings, information). The
/// floating-point status is clear after a 1. Allocates nothing.
std::int32_t FilterForeignException(const Platform::ExceptionPointers& pointers,
                                    Platform::ExceptionRecord& copy) noexcept;

/// The handler: raises CSehException with the record's text, whatever the thread's mode.
[[noreturn]] void GenerateSehException(const Platform::ExceptionRecord& record);

/// What a record says. With a table of texts by code:
///
///   access violation, 2 parameters or more    "Access violation. The instruction at 0x... referenced memory at
///                                             0x....The memory could not be read." (or "written."), and no more
///   any other record                          the code's text, or "Unknown exception 0x%08X.", then
///                                             "\nException address: 0x..."
///   with parameters                           and then their heading and a line for each
CUnicodeString GetSehExceptionText(const Platform::ExceptionRecord& record);

/// Runs `body` with `context` under the guard.
void CallGuarded(void (*body)(void* context), void* context);

/// Runs a body that calls foreign code; a fault in it arrives as CSehException. A fault runs no destructors of the
/// frames that it leaves: whatever must be released is owned outside the body. What the body raises itself passes
/// through unharmed.
template <class TBody>
void GuardForeignCode(TBody&& body) {
    auto call = [&body] {
        body();
    };
    CallGuarded([](void* context) { (*static_cast<decltype(call)*>(context))(); }, &call);
}

} // namespace Tsx
