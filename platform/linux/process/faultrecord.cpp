#include "platform/linux/process/faultrecord.h"

#include "platform/linux/process/machine.h"
#include <utility>

namespace Platform {

namespace {

constexpr std::uintptr_t AccessRead = 0;
constexpr std::uintptr_t AccessWritten = 1;
constexpr std::uintptr_t AccessExecuted = 8;
constexpr std::uintptr_t NoAddress = ~std::uintptr_t{0};
constexpr std::uintptr_t StatusEndOfFile = 0xC0000011; // STATUS_END_OF_FILE

std::uint32_t CodeOfArithmetic(int reason) {
    constexpr std::pair<int, std::uint32_t> codes[] = {
        {FPE_INTOVF, ExceptionIntegerOverflow}, {FPE_FLTDIV, ExceptionFloatDivideByZero},
        {FPE_FLTOVF, ExceptionFloatOverflow},   {FPE_FLTUND, ExceptionFloatUnderflow},
        {FPE_FLTRES, ExceptionFloatInexact},    {FPE_FLTINV, ExceptionFloatInvalid},
        {FPE_FLTSUB, ExceptionArrayBounds},
    };
    for (const auto& [known, code] : codes) {
        if (known == reason) {
            return code;
        }
    }
    return ExceptionIntegerDivideByZero;
}

// A stack that ends is touched at its pointer or just below it: by a call, or by the first use of a frame.
bool IsAtStackPointer(std::uintptr_t address, const mcontext_t& context) {
    constexpr std::uintptr_t below = 0x10000;
    constexpr std::uintptr_t above = 0x1000;
    const std::uintptr_t pointer = StackPointer(context);
    return address + below >= pointer && address < pointer + above;
}

void DescribeAccess(const siginfo_t& info, const mcontext_t& context, ExceptionRecord& record) {
    const FaultAccess access = AccessOf(context);
    record.NumberParameters = 2;
    record.ExceptionInformation[0] = access == FaultAccess::Executed  ? AccessExecuted
                                     : access == FaultAccess::Written ? AccessWritten
                                                                      : AccessRead;
    record.ExceptionInformation[1] =
        access != FaultAccess::Unknown ? reinterpret_cast<std::uintptr_t>(info.si_addr) : NoAddress;
}

} // namespace

bool IsFault(const siginfo_t& info) {
    return info.si_code > 0;
}

ExceptionRecord DescribeFault(int signal, const siginfo_t& info, const void* machine) {
    const mcontext_t& context = static_cast<const ucontext_t*>(machine)->uc_mcontext;
    ExceptionRecord record{};
    record.ExceptionAddress = reinterpret_cast<void*>(InstructionPointer(context)); // NOLINT(performance-no-int-to-ptr)
    if (signal == SIGFPE) {
        record.ExceptionCode = CodeOfArithmetic(info.si_code);
    } else if (signal == SIGILL) {
        record.ExceptionCode = ExceptionIllegalInstruction;
    } else if (signal == SIGBUS && info.si_code == BUS_ADRALN) {
        record.ExceptionCode = ExceptionDatatypeMisalignment;
    } else {
        DescribeAccess(info, context, record);
        record.ExceptionCode = ExceptionAccessViolation;
        if (signal == SIGBUS) {
            record.ExceptionCode = ExceptionInPageError;
            record.NumberParameters = 3;
            record.ExceptionInformation[2] = StatusEndOfFile;
        } else if (IsAtStackPointer(record.ExceptionInformation[1], context)) {
            record.ExceptionCode = ExceptionStackOverflow;
        }
    }
    return record;
}

} // namespace Platform
