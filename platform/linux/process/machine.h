// What differs from processor to processor. Each has a source of its own, which the build picks.
#pragma once

#include <csignal>
#include <cstdint>
#include <ucontext.h>

namespace Platform {

/// The state of a thread at a fault, as a signal's handler is given it.
std::uintptr_t InstructionPointer(const mcontext_t& context);
std::uintptr_t StackPointer(const mcontext_t& context);

enum class FaultAccess { Unknown, Read, Written, Executed };

/// What a SIGSEGV or SIGBUS was about; Unknown where the processor tells no address.
FaultAccess AccessOf(const mcontext_t& context);

/// The processor's hint for the body of a waiting loop.
void PauseProcessor();

} // namespace Platform
