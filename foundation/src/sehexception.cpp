#include "foundation/inc/sehexception.h"

#include "foundation/src/raising.h"

namespace Tsx {

namespace {

struct CCodeText {
    std::uint32_t code;
    const char16_t* text;
};

// AS DESIGNED: some rows have codes that the filter declines. They serve whoever asks for a record's text directly.
constexpr CCodeText CodeTexts[] = {
    {0x80000001,
     u"Guard page exception. A page of memory that marks the end of a data structure, such as a stack or an "
     u"array, has been accessed."},
    {0x80000002, u"Alignment fault. A datatype misalignment was detected in a load or store instruction."},
    {0x80000003, u"Breakpoint. A hard-coded breakpoint has been reached."},
    {0x80000004, u"Single step. A single step or trace operation has just been completed."},
    {0xC0000005, u"Access violation. The instruction referenced memory that could not be accessed."},
    {0xC0000006, u"In-page error. The instruction referenced memory but required data were not placed into memory "
                 u"because of an I/O error."},
    {0xC0000008, u"An invalid handle was specified."},
    {0xC0000017, u"Not enough memory. Not enough virtual memory or paging file quota is available to complete the "
                 u"specified operation."},
    {0xC000001D, u"Illegal instruction. An attempt was made to execute an illegal instruction."},
    {0xC0000025, u"Noncontinuable exception. Windows cannot continue from this exception."},
    {0xC0000026, u"An invalid exception disposition was returned by an exception handler."},
    {0xC000008C, u"Array bounds exceeded."},
    {0xC000008D, u"Floating-point denormal operand."},
    {0xC000008E, u"Floating-point division by zero."},
    {0xC000008F, u"Floating-point inexact result."},
    {0xC0000090, u"Floating-point invalid operation."},
    {0xC0000091, u"Floating-point overflow."},
    {0xC0000092, u"Floating-point stack check."},
    {0xC0000093, u"Floating-point underflow."},
    {0xC0000094, u"Integer division by zero."},
    {0xC0000095, u"Integer overflow."},
    {0xC0000096, u"Privileged instruction."},
    {0xC00000FD, u"Stack overflow. A new guard page for the stack cannot be created."},
    {0xE06D7363, u"Microsoft C++ exception."},
};

CUnicodeString AddressText(const void* address) {
    return CUnicodeString::Format(u"0x%p", address);
}

CUnicodeString TextOfCode(std::uint32_t code) {
    for (const CCodeText& row : CodeTexts) {
        if (row.code == code) {
            return row.text;
        }
    }
    return CUnicodeString::Format(u"Unknown exception 0x%08X.", code);
}

// AS DESIGNED: no blank behind the second period.
CUnicodeString TextOfAccess(const Platform::ExceptionRecord& record) {
    const auto* place =
        reinterpret_cast<const void*>(record.ExceptionInformation[1]); // NOLINT(performance-no-int-to-ptr)
    return CUnicodeString::Format(u"Access violation. The instruction at %s referenced memory at %s.The memory could "
                                  u"not be %s.",
                                  AddressText(record.ExceptionAddress), AddressText(place),
                                  record.ExceptionInformation[0] == 0 ? u"read" : u"written");
}

// The code's two top bits.
constexpr std::uint32_t SeverityError = 0xC0000000;

} // namespace

CUnicodeString GetSehExceptionText(const Platform::ExceptionRecord& record) {
    if (record.ExceptionCode == Platform::ExceptionAccessViolation && record.NumberParameters >= 2) {
        return TextOfAccess(record);
    }
    CUnicodeString text = TextOfCode(record.ExceptionCode);
    text += CUnicodeString::Format(u"\nException address: %s", AddressText(record.ExceptionAddress));
    if (record.NumberParameters > 0) {
        text += u"\n\nException has following parameters:";
    }
    for (std::uint32_t index = 0; index < record.NumberParameters; ++index) {
        // AS DESIGNED: eight digits, which are the low half of a parameter of 64 bits.
        text += CUnicodeString::Format(u"\n\t0x%08X", static_cast<std::uint32_t>(record.ExceptionInformation[index]));
    }
    return text;
}

CSehException::CSehException(const Platform::ExceptionRecord& record) : text(GetSehExceptionText(record)) {}

std::int32_t FilterForeignException(const Platform::ExceptionPointers& pointers,
                                    Platform::ExceptionRecord& copy) noexcept {
    copy = *pointers.Record;
    const std::uint32_t code = copy.ExceptionCode;
    if (code == Platform::ExceptionBreakpoint || code == Platform::ExceptionLanguage ||
        (code & SeverityError) != SeverityError) {
        return 0;
    }
    try {
        Platform::clearfp();
    } catch (...) {
        return 0;
    }
    return 1;
}

void GenerateSehException(const Platform::ExceptionRecord& record) {
    Raise<CSehException>(record);
}

void CallGuarded(void (*body)(void* context), void* context) {
    struct CCall {
        void (*body)(void*);
        void* context;
        Platform::ExceptionRecord record;
    };
    CCall call{body, context, {}};
    const bool faulted = Platform::GuardedCall(
        [](void* state) {
            const auto* running = static_cast<CCall*>(state);
            running->body(running->context);
        },
        [](const Platform::ExceptionPointers& pointers, void* state) {
            return FilterForeignException(pointers, static_cast<CCall*>(state)->record);
        },
        &call);
    if (faulted) {
        GenerateSehException(call.record);
    }
}

} // namespace Tsx
