// Critical sections, thread-local slots, and handles that tell whether a thread has ended.
#pragma once

#include "platform/inc/types.h"

#include <cstddef>
#include <cstdint>

namespace Platform {

/// Room for the system's section; entered again by the thread that holds it. sizeof(CRITICAL_SECTION) is 40 on x86-64,
/// sizeof(pthread_mutex_t) in glibc 40 there and 48 on arm64; each platform's source checks its own.
struct CriticalSection {
    alignas(8) std::byte room[48];
};

void InitializeCriticalSection(CriticalSection& section);
void DeleteCriticalSection(CriticalSection& section);
void EnterCriticalSection(CriticalSection& section);
void LeaveCriticalSection(CriticalSection& section);

constexpr std::uint32_t TlsOutOfIndexes = 0xFFFFFFFF; // TLS_OUT_OF_INDEXES

/// A slot that holds one pointer for each thread, null at first.
std::uint32_t TlsAlloc();
bool TlsFree(std::uint32_t index);
void* TlsGetValue(std::uint32_t index);
bool TlsSetValue(std::uint32_t index, void* value);

constexpr std::uint32_t StillActive = 259; // STILL_ACTIVE

/// The pseudo-handle that means the calling thread wherever it is used.
Handle GetCurrentThread();
/// A handle of its own to the thread, in this process, with the same access; closed by CloseHandle. The one source on
/// Linux is the pseudo-handle of the calling thread.
bool DuplicateHandle(Handle source, Handle& duplicate);
/// The exit code of a thread, StillActive while any code of it may still run, that of its thread-local objects'
/// destructors included; the main thread's is active until the process is gone. On Linux a thread that has ended has
/// the code 0.
bool GetExitCodeThread(Handle thread, std::uint32_t& code);

/// Lets another thread run.
void SwitchToThread();
/// Takes the calling thread off the processor for at least that time.
void Sleep(std::uint32_t milliseconds);
/// Tells the processor that this thread spins in a waiting loop.
void YieldProcessor();

} // namespace Platform
