#include "platform/inc/leaflock.h"

#include "platform/inc/threads.h"

namespace Platform {

void LeafLock::Wait() {
    constexpr int turns = 100;    // some hundred nanoseconds: longer than any holder needs that is running
    constexpr int handOvers = 50; // of the processor, to a holder that is not
    for (int round = 0;; ++round) {
        for (int i = 0; i < turns && held.load(std::memory_order_relaxed); ++i) {
            YieldProcessor();
        }
        if (!held.load(std::memory_order_relaxed) && !held.exchange(true, std::memory_order_acquire)) {
            return;
        }
        if (round < handOvers) {
            SwitchToThread();
        } else {
            Sleep(1);
        }
    }
}

} // namespace Platform
