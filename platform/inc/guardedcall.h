// Faults of the processor in code that is not ours: a call whose faults a filter may turn into a return. On Windows it
// is the frame-based guard of structured exceptions, on Linux a handler of the signals that faults become there.
#pragma once

#include <cstdint>

namespace Platform {

constexpr std::uint32_t ExceptionDatatypeMisalignment = 0x80000002; // EXCEPTION_DATATYPE_MISALIGNMENT
constexpr std::uint32_t ExceptionBreakpoint = 0x80000003;           // EXCEPTION_BREAKPOINT
constexpr std::uint32_t ExceptionAccessViolation = 0xC0000005;      // EXCEPTION_ACCESS_VIOLATION
constexpr std::uint32_t ExceptionInPageError = 0xC0000006;          // EXCEPTION_IN_PAGE_ERROR
constexpr std::uint32_t ExceptionIllegalInstruction = 0xC000001D;   // EXCEPTION_ILLEGAL_INSTRUCTION
constexpr std::uint32_t ExceptionArrayBounds = 0xC000008C;          // EXCEPTION_ARRAY_BOUNDS_EXCEEDED
constexpr std::uint32_t ExceptionFloatDivideByZero = 0xC000008E;    // EXCEPTION_FLT_DIVIDE_BY_ZERO
constexpr std::uint32_t ExceptionFloatInexact = 0xC000008F;         // EXCEPTION_FLT_INEXACT_RESULT
constexpr std::uint32_t ExceptionFloatInvalid = 0xC0000090;         // EXCEPTION_FLT_INVALID_OPERATION
constexpr std::uint32_t ExceptionFloatOverflow = 0xC0000091;        // EXCEPTION_FLT_OVERFLOW
constexpr std::uint32_t ExceptionFloatUnderflow = 0xC0000093;       // EXCEPTION_FLT_UNDERFLOW
constexpr std::uint32_t ExceptionIntegerDivideByZero = 0xC0000094;  // EXCEPTION_INT_DIVIDE_BY_ZERO
constexpr std::uint32_t ExceptionIntegerOverflow = 0xC0000095;      // EXCEPTION_INT_OVERFLOW
constexpr std::uint32_t ExceptionStackOverflow = 0xC00000FD;        // EXCEPTION_STACK_OVERFLOW
constexpr std::uint32_t ExceptionLanguage = 0xE06D7363;             // under which a language's own exceptions travel

/// EXCEPTION_RECORD, field for field. An access violation has two parameters: 0 (read), 1 (written) or 8 (executed),
/// and the address. An error while a page was read has a third one, the reason.
struct ExceptionRecord {
    std::uint32_t ExceptionCode;
    std::uint32_t ExceptionFlags;
    ExceptionRecord* Outer; // the published ExceptionRecord: of the exception in whose course this one came; or null
    void* ExceptionAddress; // of the instruction
    std::uint32_t NumberParameters; // at most 15
    std::uintptr_t ExceptionInformation[15];
};

/// EXCEPTION_POINTERS.
struct ExceptionPointers {
    ExceptionRecord* Record;
    void* ContextRecord;
};

/// Asked on the faulting thread, before anything is unwound, and on Linux inside a signal handler, with the stack of
/// one: it calls nothing that takes memory or a lock. 1 runs the handler, 0 leaves the fault to the guard around this
/// one and at last to the system.
using ExceptionFilter = std::int32_t (*)(const ExceptionPointers& pointers, void* context);

/// Runs `body` with `context`. False when it returned; true when it was left in a fault that the filter took.
///
/// A fault runs no destructors of the frames that it leaves: whatever must be released is owned outside the body. C++
/// exceptions pass through unharmed, and destructors run for them. Guards may be nested, and each serves its own thread
/// alone. On Linux faults are the four signals SIGSEGV, SIGBUS, SIGFPE and SIGILL where the processor raised them;
/// their handlers are put back when the last guard of all threads ends.
bool GuardedCall(void (*body)(void* context), ExceptionFilter filter, void* context);

/// The run-time's _clearfp: clears the floating-point status and returns what it was. On Linux GuardedCall clears it in
/// any case when a fault is taken, for a signal handler works on a status of its own.
std::uint32_t clearfp();

} // namespace Platform
