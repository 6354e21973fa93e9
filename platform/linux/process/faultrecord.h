// The record that Windows would give for the fault behind a signal.
//
//   signal, reason                   code                    parameters
//   SIGSEGV near the stack pointer   stack overflow          0 read, 1 written, 8 executed; the address
//   SIGSEGV                          access violation        the same; the address is all ones where the processor
//                                                            tells none
//   SIGBUS, BUS_ADRALN               datatype misalignment   none
//   SIGBUS                           in-page error           as for a violation, and the end of the file as the reason
//   SIGFPE                           by its reason           none
//   SIGILL                           illegal instruction     none
//
// x86-64 has one trap for a division by zero and for a quotient too large; both are reported as the first.
#pragma once

#include "platform/inc/guardedcall.h"
#include <csignal>

namespace Platform {

/// Whether the processor raised the signal, rather than a program that sent it.
bool IsFault(const siginfo_t& info);

/// The record of a fault; `machine` is the handler's third argument. To be called in the handler alone.
ExceptionRecord DescribeFault(int signal, const siginfo_t& info, const void* machine);

} // namespace Platform
