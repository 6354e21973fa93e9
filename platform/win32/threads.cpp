#include "platform/inc/threads.h"

#include "platform/inc/leaflock.h"
#include "platform/win32/windowsapi.h"

namespace Platform {

static_assert(sizeof(CriticalSection) >= sizeof(CRITICAL_SECTION));
static_assert(alignof(CriticalSection) >= alignof(CRITICAL_SECTION)); // NOLINT(misc-redundant-expression): of two types

namespace {

constexpr char NotTold = 0;

CRITICAL_SECTION* Native(CriticalSection& section) {
    return reinterpret_cast<CRITICAL_SECTION*>(section.room);
}

} // namespace

constinit const char& HasOneThread = NotTold;

void InitializeCriticalSection(CriticalSection& section) {
    ::InitializeCriticalSection(Native(section));
}

void DeleteCriticalSection(CriticalSection& section) {
    ::DeleteCriticalSection(Native(section));
}

void EnterCriticalSection(CriticalSection& section) {
    ::EnterCriticalSection(Native(section));
}

void LeaveCriticalSection(CriticalSection& section) {
    ::LeaveCriticalSection(Native(section));
}

std::uint32_t TlsAlloc() {
    return ::TlsAlloc();
}

bool TlsFree(std::uint32_t index) {
    return ::TlsFree(index) != 0;
}

void* TlsGetValue(std::uint32_t index) {
    return ::TlsGetValue(index);
}

bool TlsSetValue(std::uint32_t index, void* value) {
    return ::TlsSetValue(index, value) != 0;
}

Handle GetCurrentThread() {
    return ::GetCurrentThread();
}

bool DuplicateHandle(Handle source, Handle& duplicate) {
    HANDLE process = ::GetCurrentProcess();
    return ::DuplicateHandle(process, source, process, &duplicate, 0, FALSE, DUPLICATE_SAME_ACCESS) != 0;
}

bool GetExitCodeThread(Handle thread, std::uint32_t& code) {
    DWORD result = 0;
    const bool known = ::GetExitCodeThread(thread, &result) != 0;
    code = result;
    return known;
}

void SwitchToThread() {
    ::SwitchToThread();
}

void Sleep(std::uint32_t milliseconds) {
    ::Sleep(milliseconds);
}

void YieldProcessor() {
    __builtin_ia32_pause();
}

} // namespace Platform
