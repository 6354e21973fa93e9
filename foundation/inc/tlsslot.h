// One thread-local slot of the system: that of the thread objects, and that of the current memory manager.
#pragma once

#include "platform/inc/threads.h"
#include <cstdint>

namespace Tsx {

/// A pointer for each thread, null at first. Where the system has no slot left, the debugger is told in a line, and
/// Get gives null on every thread.
class CTlsSlot {
public:
    CTlsSlot();
    ~CTlsSlot();
    CTlsSlot(const CTlsSlot&) = delete;
    CTlsSlot& operator=(const CTlsSlot&) = delete;

    void* Get() const { return Platform::TlsGetValue(TlsIndex); }
    void Set(void* value) const { Platform::TlsSetValue(TlsIndex, value); }

protected:
    std::uint32_t TlsIndex;
};

} // namespace Tsx
