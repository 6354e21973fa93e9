// The lock of a heap: entered again by its holder, and cheap when nobody else wants it.
#pragma once

#include <atomic>
#include <cstdint>
#include <sched.h>

namespace Platform {

/// Works with std::lock_guard.
class HeapMutex {
public:
    void lock() {
        const void* me = Me();
        if (holder.load(std::memory_order_relaxed) != me) {
            const void* nobody = nullptr;
            for (int turns = 0; !holder.compare_exchange_weak(nobody, me, std::memory_order_acquire);
                 nobody = nullptr) {
                if (++turns > mostTurns) {
                    sched_yield();
                }
            }
        }
        ++depth;
    }

    void unlock() {
        if (--depth == 0) {
            holder.store(nullptr, std::memory_order_release);
        }
    }

private:
    static constexpr int mostTurns = 100;

    std::atomic<const void*> holder{nullptr};
    std::int32_t depth = 0;

    // An address that each thread has for itself.
    static const void* Me() {
        thread_local char mark = 0;
        return &mark;
    }
};

} // namespace Platform
