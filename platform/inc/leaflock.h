// The lock for a few instructions: string blocks, memory exceptions, the heaps of Linux.
#pragma once

#include <atomic>

namespace Platform {

/// Not 0 as long as the process has had no second thread, on a system that tells. Only to be read.
extern const char& HasOneThread;

/// A waiter spins first, then yields the processor, and at last sleeps, for the holder may have a lower priority and
/// need this processor. Nothing that can fail, block or take another lock happens inside. Not to be entered again by
/// its holder. Needs no constructor, so that it serves before the first static object and after the last.
class LeafLock {
public:
    /// Without another thread no atomic instruction is needed, which takes most of the time of a pair of blocks.
    void Enter() {
        if (HasOneThread != 0 && !held.load(std::memory_order_relaxed)) {
            held.store(true, std::memory_order_relaxed);
        } else if (held.exchange(true, std::memory_order_acquire)) {
            Wait();
        }
    }
    void Leave() { held.store(false, std::memory_order_release); }

private:
    std::atomic<bool> held{false};

    void Wait();
};

class LeafLockGuard {
public:
    explicit LeafLockGuard(LeafLock& toHold) : lock(toHold) { lock.Enter(); }
    ~LeafLockGuard() { lock.Leave(); }
    LeafLockGuard(const LeafLockGuard&) = delete;
    LeafLockGuard& operator=(const LeafLockGuard&) = delete;

private:
    LeafLock& lock;
};

} // namespace Platform
