// The three allocation policies, side by side. A container takes one as a template parameter.
#pragma once

#include "foundation/inc/memorymanager.h"
#include <cstdint>

namespace Tsx {

/// Ordinary objects: through the thread's current manager, released to the manager that served the block.
struct CCurrentManagerPolicy {
    static void* Alloc(std::int64_t size) { return AllocateFromCurrentManager(size); }
    static void Free(void* block) noexcept { FreeToOwnManager(block); }
};

/// Exceptions and what error paths use: the C runtime's heap, without a header.
struct CRuntimeHeapPolicy {
    static void* Alloc(std::int64_t size) { return AllocateFromRuntimeHeap(size); }
    static void Free(void* block) noexcept { FreeToRuntimeHeap(block); }
};

/// The foundation's own registries and per-thread records, which must not depend on anything above: the process heap.
struct CProcessHeapPolicy {
    static void* Alloc(std::int64_t size) { return AllocateFromProcessHeap(size); }
    static void Free(void* block) noexcept { FreeToProcessHeap(block); }
};

} // namespace Tsx
