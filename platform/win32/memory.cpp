#include "platform/inc/memory.h"

#include <cstdlib>

namespace Platform {

void* AllocateRuntimeHeap(std::size_t size) noexcept {
    return std::malloc(size);
}

void FreeRuntimeHeap(void* block) noexcept {
    std::free(block);
}

} // namespace Platform
