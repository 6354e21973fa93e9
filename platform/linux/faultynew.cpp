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

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
