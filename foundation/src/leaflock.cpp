#include "foundation/inc/leaflock.h"

#include "platform/inc/threads.h"

namespace Tsx {

void CLeafLock::Wait() {
    constexpr int turns = 100;    // some hundred nanoseconds: longer than any holder needs that is running
    constexpr int handOvers = 50; // of the processor, to a holder that is not
    for (int round = 0;; ++round) {
        for (int i = 0; i < turns && held.load(std::memory_order_relaxed); ++i) {
            Platform::YieldProcessor();
        }
        if (!held.load(std::memory_order_relaxed) && !held.exchange(true, std::memory_order_acquire)) {
            return;
        }
        if (round < handOvers) {
            Platform::SwitchToThread();
        } else {
            Platform::Sleep(1);
        }
    }
}

} // namespace Tsx
