// A lock that its holder may enter again, and the guard that holds it over a scope.
#pragma once

#include "platform/inc/threads.h"

namespace Tsx {

class CCriticalSection {
public:
    CCriticalSection() { Platform::InitializeCriticalSection(section); }
    ~CCriticalSection() { Platform::DeleteCriticalSection(section); }
    CCriticalSection(const CCriticalSection&) = delete;
    CCriticalSection& operator=(const CCriticalSection&) = delete;

    void Enter() { Platform::EnterCriticalSection(section); }
    void Leave() { Platform::LeaveCriticalSection(section); }

private:
    Platform::CriticalSection section;
};

class CCriticalSectionLock {
public:
    explicit CCriticalSectionLock(CCriticalSection& toHold) : section(toHold) { section.Enter(); }
    ~CCriticalSectionLock() { section.Leave(); }
    CCriticalSectionLock(const CCriticalSectionLock&) = delete;
    CCriticalSectionLock& operator=(const CCriticalSectionLock&) = delete;

private:
    CCriticalSection& section;
};

} // namespace Tsx
