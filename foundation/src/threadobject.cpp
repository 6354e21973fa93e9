#include "foundation/inc/threadobject.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/messagehandlers.h"
#include "platform/inc/memory.h"
#include "platform/inc/process.h"
#include <cstring>

namespace Tsx {

CThreadObjectFamily::CThreadObjectFamily(std::size_t size) : valueSize(size), slot(Platform::TlsAlloc()) {}

CThreadObjectFamily::~CThreadObjectFamily() {
    Platform::TlsFree(slot);
    for (void* value : values) {
        Platform::FreeRuntimeHeap(value);
    }
}

void* CThreadObjectFamily::GetValue() {
    if (void* value = Platform::TlsGetValue(slot)) {
        return value;
    }
    void* value = Platform::AllocateRuntimeHeap(valueSize);
    if (!value) {
        GenerateMemoryException();
    }
    std::memset(value, 0, valueSize);
    Platform::TlsSetValue(slot, value);
    const CCriticalSectionLock guard(lock);
    values.push_back(value);
    return value;
}

CReentryScope::CReentryScope(std::int32_t kind) : kept(*ErrorGuardState.Get()) {
    CErrorGuardState& state = *ErrorGuardState.Get();
    if (state.InInternalError && kind == 1) {
        DisplayMessage(DoubleErrorText, FatalMessageStyle);
        Platform::Abort();
    }
    state.InInternalError = state.InInternalError || kind == 1;
    state.Raising = state.Raising || kind == 0;
}

CReentryScope::~CReentryScope() { *ErrorGuardState.Get() = kept; }

} // namespace Tsx
