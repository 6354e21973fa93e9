// Critical sections and thread-local slots.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Platform {

/// Room for the system's section; entered again by the thread that holds it. 40 bytes is sizeof(CRITICAL_SECTION) on
/// x86-64 and sizeof(pthread_mutex_t) in glibc; each platform's source checks its own.
struct CriticalSection {
    alignas(8) std::byte room[40];
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

} // namespace Platform
