// Signals as structured exceptions. The handler makes the record that Windows would, asks the thread's guards
// from the innermost outwards and jumps to the first one that takes it. Faults that none takes go to whoever handled
// the signal before.
#include "platform/inc/guardedcall.h"

#include "platform/linux/process/faultrecord.h"
#include <array>
#include <cerrno>
#include <cfenv>
#include <csetjmp>
#include <cstddef>
#include <mutex>
#include <sys/mman.h>

namespace Platform {

namespace {

constexpr std::array<int, 4> FaultSignals{SIGSEGV, SIGBUS, SIGFPE, SIGILL};

struct HandlerState {
    std::mutex lock;
    std::size_t guardedThreads = 0;
    std::array<struct sigaction, FaultSignals.size()> previous{};
};

// Never destroyed: a guard may stand in a static object's end.
HandlerState& Handlers() {
    static HandlerState& state = *new HandlerState;
    return state;
}

struct Guard;
thread_local Guard* innermost = nullptr;

void OnFault(int signal, siginfo_t* info, void* machine);

void InstallHandlers() {
    HandlerState& state = Handlers();
    const std::lock_guard guard(state.lock);
    if (state.guardedThreads++ != 0) {
        return;
    }
    struct sigaction ours {};
    ours.sa_sigaction = &OnFault;
    ours.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&ours.sa_mask);
    for (std::size_t index = 0; index < FaultSignals.size(); ++index) {
        sigaction(FaultSignals[index], &ours, &state.previous[index]);
    }
}

void RestoreHandlers() {
    HandlerState& state = Handlers();
    const std::lock_guard guard(state.lock);
    if (--state.guardedThreads != 0) {
        return;
    }
    for (std::size_t index = 0; index < FaultSignals.size(); ++index) {
        struct sigaction present {};
        sigaction(FaultSignals[index], nullptr, &present);
        // One that foreign code has put in our place meanwhile stays.
        if ((present.sa_flags & SA_SIGINFO) && present.sa_sigaction == &OnFault) {
            sigaction(FaultSignals[index], &state.previous[index], nullptr);
        }
    }
}

/// A stack for the handler, which cannot run on one that has overflowed. A thread that has one keeps it.
class AlternateStack {
public:
    AlternateStack() {
        if (sigaltstack(nullptr, &previous) != 0 || !(previous.ss_flags & SS_DISABLE)) {
            return;
        }
        void* mapping = mmap(nullptr, Size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapping == MAP_FAILED) {
            return; // every fault but an overflow is still seen
        }
        room = mapping;
        stack_t own{};
        own.ss_sp = room;
        own.ss_size = Size;
        sigaltstack(&own, nullptr);
    }
    ~AlternateStack() {
        if (room) {
            sigaltstack(&previous, nullptr);
            munmap(room, Size);
        }
    }
    AlternateStack(const AlternateStack&) = delete;
    AlternateStack& operator=(const AlternateStack&) = delete;

private:
    static constexpr std::size_t Size = 0x20000;

    stack_t previous{};
    void* room = nullptr;
};

/// What a thread holds while it has a guard: made by its outermost one.
class GuardedThread {
public:
    GuardedThread() { InstallHandlers(); }
    ~GuardedThread() { RestoreHandlers(); }
    GuardedThread(const GuardedThread&) = delete;
    GuardedThread& operator=(const GuardedThread&) = delete;

private:
    AlternateStack stack;
};

struct Guard {
    Guard(ExceptionFilter asked, void* asking) : filter(asked), context(asking), outer(innermost) {
        std::fegetenv(&environment);
        innermost = this;
    }
    ~Guard() { innermost = outer; }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

    /// After the jump: guards inside this one were left without their ends, and the handler's floating-point
    /// environment is not the thread's.
    void Land() {
        innermost = this;
        std::fesetenv(&environment);
        std::feclearexcept(FE_ALL_EXCEPT);
    }

    ExceptionFilter filter;
    void* context;
    Guard* outer;
    fenv_t environment{};
    sigjmp_buf landing{};
};

// Lets the signal take the course it would have without us.
void PassOn(int signal, siginfo_t* info, void* machine) {
    std::size_t index = 0;
    while (FaultSignals[index] != signal) {
        ++index;
    }
    const struct sigaction& previous = Handlers().previous[index];
    if (previous.sa_flags & SA_SIGINFO) {
        previous.sa_sigaction(signal, info, machine);
    } else if (previous.sa_handler == SIG_IGN && !IsFault(*info)) {
        return;
    } else if (previous.sa_handler != SIG_DFL && previous.sa_handler != SIG_IGN) {
        previous.sa_handler(signal);
    } else {
        // A fault comes again when the handler returns, and then ends the process; a signal that was sent does not.
        struct sigaction standard {};
        standard.sa_handler = SIG_DFL;
        sigaction(signal, &standard, nullptr);
        if (!IsFault(*info)) {
            raise(signal);
        }
    }
}

void OnFault(int signal, siginfo_t* info, void* machine) {
    const int keptErrno = errno;
    if (IsFault(*info)) {
        ExceptionRecord record = DescribeFault(signal, *info, machine);
        const ExceptionPointers pointers{&record, machine};
        for (Guard* guard = innermost; guard; guard = guard->outer) {
            if (guard->filter(pointers, guard->context) != 0) {
                errno = keptErrno;
                siglongjmp(guard->landing, 1);
            }
        }
    }
    errno = keptErrno;
    PassOn(signal, info, machine);
}

bool RunGuarded(void (*body)(void* context), ExceptionFilter filter, void* context) {
    Guard guard(filter, context);
    if (sigsetjmp(guard.landing, 1) != 0) {
        guard.Land();
        return true;
    }
    body(context);
    return false;
}

} // namespace

bool GuardedCall(void (*body)(void* context), ExceptionFilter filter, void* context) {
    if (innermost) {
        return RunGuarded(body, filter, context);
    }
    const GuardedThread thread;
    return RunGuarded(body, filter, context);
}

std::uint32_t clearfp() {
    const int status = std::fetestexcept(FE_ALL_EXCEPT);
    std::feclearexcept(FE_ALL_EXCEPT);
    return static_cast<std::uint32_t>(status);
}

} // namespace Platform
