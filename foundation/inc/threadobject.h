// Values that each thread has for itself, made at its first use, and the guard around the processing of a failure.
#pragma once

#include "foundation/inc/criticalsection.h"
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Tsx {

/// The untyped part of CThreadObject: a slot, and all values of all threads, freed when the family goes.
class CThreadObjectFamily {
public:
    explicit CThreadObjectFamily(std::size_t valueSize);
    ~CThreadObjectFamily();
    CThreadObjectFamily(const CThreadObjectFamily&) = delete;
    CThreadObjectFamily& operator=(const CThreadObjectFamily&) = delete;

    /// The calling thread's value, all zero at first; never null. Raises CMemoryException.
    void* GetValue();
    /// The same, but null when the value does not exist and cannot be made: for the path that tells of exhausted
    /// memory.
    void* TryGetValue();

private:
    std::size_t valueSize;
    std::uint32_t slot;
    CCriticalSection lock;
    std::vector<void*> values;
};

/// One static instance a family. The value belongs to its thread alone.
template <class T>
class CThreadObject : public CThreadObjectFamily {
public:
    CThreadObject() : CThreadObjectFamily(sizeof(T)) {}
    T* Get() { return static_cast<T*>(GetValue()); }
    T* TryGet() { return static_cast<T*>(TryGetValue()); }
};

/// What the failure paths remember of a thread.
struct CErrorGuardState {
    bool Raising;         // an exception object is being built
    bool InInternalError; // an internal failure is being shown
};

struct CThreadErrorMode {
    bool ErrorReported; // an internal failure was reported on this thread
    bool NoExceptions;  // failures on this thread must not be thrown
};

extern CThreadObject<CErrorGuardState> ErrorGuardState;
extern CThreadObject<CThreadErrorMode> ThreadErrorMode;

/// Stands around the processing of a failure: kind 0 builds an exception, kind 1 shows an internal error. The thread is
/// served from the runtime heap meanwhile. A second internal error inside the first ends the process with a notice.
class CReentryScope {
public:
    explicit CReentryScope(std::int32_t kind);
    ~CReentryScope();
    CReentryScope(const CReentryScope&) = delete;
    CReentryScope& operator=(const CReentryScope&) = delete;

private:
    CErrorGuardState* state; // null when there is no memory even for this
    CErrorGuardState kept;
};

} // namespace Tsx
