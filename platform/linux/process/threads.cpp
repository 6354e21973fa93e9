#include "platform/inc/threads.h"

#include "platform/inc/lasterror.h"
#include "platform/inc/leaflock.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/files/handles.h"
#include "platform/linux/process/machine.h"
#include <cerrno>
#include <climits>
#include <ctime>
#include <new>
#include <pthread.h>
#include <sched.h>
#include <sys/single_threaded.h>
#include <utility>

namespace Platform {

constinit const char& HasOneThread = __libc_single_threaded;

static_assert(sizeof(CriticalSection) >= sizeof(pthread_mutex_t)); // NOLINT(misc-redundant-expression): equal by design
static_assert(alignof(CriticalSection) >= alignof(pthread_mutex_t)); // NOLINT(misc-redundant-expression)

namespace {

pthread_mutex_t* Native(CriticalSection& section) {
    return reinterpret_cast<pthread_mutex_t*>(section.room);
}

/// What a thread shares with the handles to it. The value of a key, and no thread-local object: the destructors of
/// those run in the order of their first use, and the main thread's before the static objects go.
struct ThreadLife {
    std::shared_ptr<std::atomic<std::uint32_t>> exitCode = std::make_shared<std::atomic<std::uint32_t>>(StillActive);
    // The C library calls the destructors of a thread's keys in at most so many rounds. The last one is left out, for
    // ThreadSanitizer ends its work for the thread in it.
    int roundsLeft = PTHREAD_DESTRUCTOR_ITERATIONS - 1;
};

extern "C" void EndThreadLife(void* value);

pthread_key_t LifeKey() {
    static const pthread_key_t key = [] {
        pthread_key_t made{};
        return pthread_key_create(&made, &EndThreadLife) == 0 ? made : ~pthread_key_t{0};
    }();
    return key;
}

// Puts itself off to the last round but one, for the destructors of other keys may ask for the thread's records.
extern "C" void EndThreadLife(void* value) {
    std::unique_ptr<ThreadLife> life(static_cast<ThreadLife*>(value));
    if (--life->roundsLeft > 0 && pthread_setspecific(LifeKey(), value) == 0) {
        static_cast<void>(life.release());
        return;
    }
    life->exitCode->store(0);
}

// The calling thread's; null with the last error set.
ThreadLife* OwnLife() {
    auto* life = static_cast<ThreadLife*>(pthread_getspecific(LifeKey()));
    if (life) {
        return life;
    }
    auto fresh = std::make_unique<ThreadLife>();
    const int result = pthread_setspecific(LifeKey(), fresh.get());
    return result == 0 ? fresh.release() : Fail(WindowsErrorCode(result), nullptr);
}

} // namespace

void InitializeCriticalSection(CriticalSection& section) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(Native(section), &attributes);
    pthread_mutexattr_destroy(&attributes);
}

void DeleteCriticalSection(CriticalSection& section) {
    pthread_mutex_destroy(Native(section));
}

void EnterCriticalSection(CriticalSection& section) {
    pthread_mutex_lock(Native(section));
}

void LeaveCriticalSection(CriticalSection& section) {
    pthread_mutex_unlock(Native(section));
}

std::uint32_t TlsAlloc() {
    PLATFORM_FAULT(TlsAlloc, TlsOutOfIndexes);
    pthread_key_t key = 0;
    const int result = pthread_key_create(&key, nullptr);
    if (result != 0) {
        return Fail(WindowsErrorCode(result), TlsOutOfIndexes);
    }
    return key;
}

bool TlsFree(std::uint32_t index) {
    const bool isFreed = pthread_key_delete(index) == 0;
    PLATFORM_FAULT(TlsFree, false);
    return isFreed || Fail(ErrorInvalidParameter);
}

void* TlsGetValue(std::uint32_t index) {
    return pthread_getspecific(index);
}

bool TlsSetValue(std::uint32_t index, void* value) {
    PLATFORM_FAULT(TlsSetValue, false);
    const int result = pthread_setspecific(index, value);
    return result == 0 || Fail(WindowsErrorCode(result));
}

Handle GetCurrentThread() {
    return reinterpret_cast<Handle>(~std::uintptr_t{1}); // NOLINT(performance-no-int-to-ptr): -2, the published value
}

bool DuplicateHandle(Handle source, Handle& duplicate) {
    PLATFORM_FAULT(DuplicateHandle, false);
    if (source != GetCurrentThread()) {
        return Fail(ErrorInvalidHandle);
    }
    const ThreadLife* life = OwnLife();
    auto* thread = life ? new (std::nothrow) ThreadObject : nullptr;
    if (!thread) {
        return life ? Fail(ErrorNotEnoughMemory) : false;
    }
    thread->exitCode = life->exitCode;
    duplicate = static_cast<HandleObject*>(thread);
    return true;
}

bool GetExitCodeThread(Handle thread, std::uint32_t& code) {
    PLATFORM_FAULT(GetExitCodeThread, false);
    const ThreadObject* object = ThreadOf(thread);
    code = object ? object->exitCode->load() : 0;
    return object != nullptr;
}

void SwitchToThread() {
    sched_yield();
}

void Sleep(std::uint32_t milliseconds) {
    timespec rest{milliseconds / 1000, static_cast<long>(milliseconds % 1000) * 1000000};
    while (nanosleep(&rest, &rest) != 0 && errno == EINTR) {
    }
}

void YieldProcessor() {
    PauseProcessor();
}

} // namespace Platform
