// The standard library's memory under fault injection: what `new` is asked for counts as calls of a function of that
// name. Part of builds for tests alone.
#include "platform/linux/faulthook.h"

#include <cstdlib>
#include <new>

void* operator new(std::size_t size) {
    if (!Platform::FaultDue("new", Platform::CallKind::StandardNew)) {
        if (void* block = std::malloc(size != 0 ? size : 1)) {
            return block;
        }
    }
    throw std::bad_alloc();
}

// The sanitizers have one of their own, which would not go with the releases below.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
