#include "foundation/inc/privateallocators.h"

#include "foundation/inc/errorsfwd.h"
#include "platform/inc/memory.h"
#include <cstddef>

namespace Tsx {

void* CStringBlockAllocator::Alloc(std::int32_t size, std::int32_t& allocated) {
    const std::int32_t reported = size > 128 ? size : size > 64 ? 128 : size > 32 ? 64 : 32;
    void* block = Platform::AllocateRuntimeHeap(static_cast<std::size_t>(reported));
    if (!block) {
        GenerateMemoryException();
    }
    allocated = reported;
    return block;
}

void CStringBlockAllocator::Free(void* block, std::int32_t allocated) noexcept {
    static_cast<void>(allocated);
    Platform::FreeRuntimeHeap(block);
}

} // namespace Tsx
