#include "platform/inc/memory.h"

#include "platform/linux/faulthook.h"
#include <cstdlib>

namespace Platform {

void* AllocateRuntimeHeap(std::size_t size) noexcept {
    PLATFORM_FAULT(AllocateRuntimeHeap, nullptr);
    return std::malloc(size);
}

void FreeRuntimeHeap(void* block) noexcept {
    std::free(block);
}

} // namespace Platform
