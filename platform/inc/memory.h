// The run-time heap. Every allocation of the foundation that is not the system's own comes through here, so that a test
// build can make the n-th one fail.
#pragma once

#include <cstddef>

namespace Platform {

/// The run-time's malloc and free: null when memory is exhausted; free takes null.
void* AllocateRuntimeHeap(std::size_t size) noexcept;
void FreeRuntimeHeap(void* block) noexcept;

} // namespace Platform
