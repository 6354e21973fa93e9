// Who serves memory: the interface of memory managers, the two that stand for the whole process, the thread's current
// one, and the allocation policies of classes.
#pragma once

#include "foundation/inc/criticalsection.h"
#include <cstddef>
#include <cstdint>

namespace Tsx {

class IMemoryManager {
public:
    virtual ~IMemoryManager() = default;
    /// A block of `size` bytes, aligned to 16; raises CMemoryException rather than give null.
    virtual void* Alloc(std::int32_t size) = 0;
    /// Takes back a block of this manager; null is ignored.
    virtual void Free(void* block) = 0;
};

/// The C runtime's heap. Any thread.
class CRuntimeHeapManager : public IMemoryManager {
public:
    void* Alloc(std::int32_t size) override;
    void Free(void* block) override;
};

/// Whole pages of the system's virtual memory. Any thread.
class CVirtualMemoryManager : public IMemoryManager {
public:
    void* Alloc(std::int32_t size) override;
    /// A failure is an assertion.
    void Free(void* block) override;

private:
    CCriticalSection lock; // AS DESIGNED: neither Alloc nor Free takes it; the system locks its pages itself
};

extern CRuntimeHeapManager RuntimeHeapManager;
extern CVirtualMemoryManager VirtualMemoryManager;

/// The manager that serves this thread: the runtime heap's unless the thread has chosen another.
IMemoryManager* CurrentMemoryManager();

/// Allocates through the current manager. The manager is noted in 16 bytes in front of the block, so that the release
/// finds it from any thread and whatever manager is current then. Raises CMemoryException, also for a manager that
/// gives null.
void* AllocateFromCurrentManager(std::int64_t size);
/// Null is ignored. What the manager raises is shown at once: destructors release.
void FreeToOwnManager(void* block) noexcept;

/// The C runtime's heap and the process heap, without a header. Both raise CMemoryException; null is ignored at
/// release. A failed release to the process heap is an assertion, shown at once: destructors release.
void* AllocateFromRuntimeHeap(std::int64_t size);
void FreeToRuntimeHeap(void* block) noexcept;
void* AllocateFromProcessHeap(std::int64_t size);
void FreeToProcessHeap(void* block) noexcept;

/// Makes a manager the calling thread's current one over a scope.
class CMemoryManagerScope {
public:
    explicit CMemoryManagerScope(IMemoryManager* manager);
    /// Puts back what was current, never null: a thread without a choice then has the runtime heap's manager, which
    /// means the same.
    ~CMemoryManagerScope();
    CMemoryManagerScope(const CMemoryManagerScope&) = delete;
    CMemoryManagerScope& operator=(const CMemoryManagerScope&) = delete;

private:
    IMemoryManager* kept;
};

/// Serves the calling thread from the runtime heap over a scope: the paths of failures and messages must not depend on
/// a manager that may be what is failing.
class CRuntimeHeapSwitcher : private CMemoryManagerScope {
public:
    CRuntimeHeapSwitcher() : CMemoryManagerScope(&RuntimeHeapManager) {}
};

/// Tag of the runtime heap as a class's allocation policy.
struct RuntimeHeap;

/// Base of classes whose objects live on the heap that the tag names. `new` gives null, and constructs nothing, when
/// memory is exhausted.
template <class THeap>
class CAllocatedOn;

template <>
class CAllocatedOn<RuntimeHeap> {
public:
    static void* operator new(std::size_t size) noexcept;
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* block) noexcept;
};

} // namespace Tsx
