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
    void* value = TryGetValue();
    if (!value) {
        GenerateMemoryException();
    }
    return value;
}

void* CThreadObjectFamily::TryGetValue() {
    if (void* value = Platform::TlsGetValue(slot)) {
        return value;
    }
    void* value = Platform::AllocateRuntimeHeap(valueSize);
    if (value) {
        std::memset(value, 0, valueSize);
        Platform::TlsSetValue(slot, value);
        const CCriticalSectionLock guard(lock);
        values.push_back(value);
    }
    return value;
}

CReentryScope::CReentryScope(std::int32_t kind) : state(ErrorGuardState.TryGet()), kept() {
    if (!state) {
        return;
    }
    kept = *state;
    if (state->InInternalError && kind == 1) {
        DisplayMessage(DoubleErrorText, FatalMessageStyle);
        Platform::Abort();
    }
    state->InInternalError = state->InInternalError || kind == 1;
    state->Raising = state->Raising || kind == 0;
}

CReentryScope::~CReentryScope() {
    if (state) {
        *state = kept;
    }
}

} // namespace Tsx
