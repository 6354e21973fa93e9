#include "platform/linux/process/machine.h"

namespace Platform {

std::uintptr_t InstructionPointer(const mcontext_t& context) {
    return static_cast<std::uintptr_t>(context.gregs[REG_RIP]);
}

std::uintptr_t StackPointer(const mcontext_t& context) {
    return static_cast<std::uintptr_t>(context.gregs[REG_RSP]);
}

// From the trap and its error code: an access to an address that no program can have is another trap than that of a
// page.
FaultAccess AccessOf(const mcontext_t& context) {
    constexpr greg_t pageFault = 14;
    constexpr greg_t written = 0x02;
    constexpr greg_t executed = 0x10;
    if (context.gregs[REG_TRAPNO] != pageFault) {
        return FaultAccess::Unknown;
    }
    const greg_t error = context.gregs[REG_ERR];
    return (error & executed) != 0  ? FaultAccess::Executed
           : (error & written) != 0 ? FaultAccess::Written
                                    : FaultAccess::Read;
}

void PauseProcessor() {
    __builtin_ia32_pause();
}

} // namespace Platform
