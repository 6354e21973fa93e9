#include "foundation/src/runtimehooks.h"

#include "foundation/inc/errors.h"
#include "platform/inc/process.h"
#include <atomic>
#include <exception>
#include <new>

namespace Tsx {

namespace {

using CHook = void (*)();

std::atomic<CHook> pureCallHook{nullptr};

// What stood before, under FoundationLock.
CHook earlierTerminateHook = nullptr;
CHook earlierUnexpectedHook = nullptr;
CHook earlierPureCallHook = nullptr;

void EndUnhandled() {
    EndWithLastResort(UnhandledErrorText);
}

CHook runtimeHook = nullptr;

void EndOutside() {
    if (!std::current_exception()) {
        runtimeHook();
    }
    try {
        throw;
    } catch (const CMemoryException*) {
        EndWithLastResort(NotEnoughMemoryText);
    } catch (const std::bad_alloc&) {
        EndWithLastResort(NotEnoughMemoryText);
    } catch (...) {
        runtimeHook();
    }
}

// AS DESIGNED: the process ends right after it, without any text.
void IgnorePureCall() {}

CHook SetPureCallHook(CHook hook) {
    return pureCallHook.exchange(hook);
}

// The language has no such hook any more, but the run-time keeps it for libraries that were built before.
CHook SetUnexpectedHook(CHook hook) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    return std::set_unexpected(hook);
#pragma GCC diagnostic pop
}

/// Installs a hook; the one before is kept unless it was this very one.
void Install(CHook (*set)(CHook), CHook hook, CHook& earlier) {
    const CHook before = set(hook);
    if (before != hook) {
        earlier = before;
    }
}

} // namespace

void InstallOuterHook() {
    runtimeHook = std::set_terminate(&EndOutside);
}

void InstallRuntimeHooks() {
    Install(&std::set_terminate, &EndUnhandled, earlierTerminateHook);
    Install(&SetUnexpectedHook, &EndUnhandled, earlierUnexpectedHook);
    Install(&SetPureCallHook, &IgnorePureCall, earlierPureCallHook);
}

void RestoreRuntimeHooks() {
    std::set_terminate(earlierTerminateHook);
    SetUnexpectedHook(earlierUnexpectedHook);
    SetPureCallHook(earlierPureCallHook);
}

} // namespace Tsx

// The run-time's own entry, in whose place this one is linked: the run-time has no hook for it.
extern "C" [[noreturn]] void __cxa_pure_virtual() { // NOLINT(bugprone-reserved-identifier): the name is the run-time's
    if (const Tsx::CHook hook = Tsx::pureCallHook) {
        hook();
        Platform::Abort();
    }
    std::terminate();
}
