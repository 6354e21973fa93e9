#include "platform/linux/process/machine.h"

#include <asm/sigcontext.h>
#include <cstddef>
#include <cstring>

namespace Platform {

namespace {

// The exception syndrome, a record among those behind the registers; 0 without one.
std::uint64_t SyndromeOf(const mcontext_t& context) {
    const std::byte* next = reinterpret_cast<const std::byte*>(context.__reserved);
    const std::byte* const end = next + sizeof(context.__reserved);
    while (end - next >= static_cast<std::ptrdiff_t>(sizeof(esr_context))) {
        _aarch64_ctx head{};
        std::memcpy(&head, next, sizeof(head));
        if (head.magic == ESR_MAGIC) {
            esr_context record{};
            std::memcpy(&record, next, sizeof(record));
            return record.esr;
        }
        if (head.magic == 0 || head.size < sizeof(head)) {
            break;
        }
        next += head.size;
    }
    return 0;
}

} // namespace

std::uintptr_t InstructionPointer(const mcontext_t& context) {
    return context.pc;
}

std::uintptr_t StackPointer(const mcontext_t& context) {
    return context.sp;
}

FaultAccess AccessOf(const mcontext_t& context) {
    constexpr std::uint64_t instructionAbort = 0x20; // classes of exceptions, from the level of programs
    constexpr std::uint64_t dataAbort = 0x24;
    constexpr std::uint64_t written = 0x40;
    const std::uint64_t syndrome = SyndromeOf(context);
    const std::uint64_t exceptionClass = syndrome >> 26 & 0x3F;
    if (exceptionClass == instructionAbort) {
        return FaultAccess::Executed;
    }
    if (exceptionClass != dataAbort) {
        return FaultAccess::Unknown;
    }
    return (syndrome & written) != 0 ? FaultAccess::Written : FaultAccess::Read;
}

void PauseProcessor() {
    asm volatile("yield");
}

} // namespace Platform
