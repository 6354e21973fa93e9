#include "foundation/inc/leaflock.h"

#include "platform/inc/threads.h"

namespace Tsx {

void CLeafLock::Wait() {
    constexpr int turns = 100; // some hundred nanoseconds: longer than any holder needs that is running
    do {
        for (int i = 0; i < turns && held.load(std::memory_order_relaxed); ++i) {
            __builtin_ia32_pause();
        }
        if (held.load(std::memory_order_relaxed)) {
            Platform::SwitchToThread();
        }
    } while (held.exchange(true, std::memory_order_acquire));
}

} // namespace Tsx
