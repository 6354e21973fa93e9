#include "platform/inc/threads.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/files/handles.h"
#include <new>
#include <pthread.h>
#include <sched.h>

namespace Platform {

static_assert(sizeof(CriticalSection) >= sizeof(pthread_mutex_t)); // NOLINT(misc-redundant-expression): equal by design
static_assert(alignof(CriticalSection) >= alignof(pthread_mutex_t)); // NOLINT(misc-redundant-expression)

namespace {

pthread_mutex_t* Native(CriticalSection& section) {
    return reinterpret_cast<pthread_mutex_t*>(section.room);
}

/// Lives as long as its thread and tells the handles when that ends.
struct ThreadLife {
    std::shared_ptr<std::atomic<std::uint32_t>> exitCode = std::make_shared<std::atomic<std::uint32_t>>(StillActive);
    ~ThreadLife() { exitCode->store(0); }
};

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
        SetLastError(WindowsErrorCode(result));
        return TlsOutOfIndexes;
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
    auto* thread = new (std::nothrow) ThreadObject;
    if (!thread) {
        return Fail(ErrorNotEnoughMemory);
    }
    thread_local const ThreadLife life;
    thread->exitCode = life.exitCode;
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

} // namespace Platform
