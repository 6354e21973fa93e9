// One thread-local slot of the system.
#pragma once

#include "platform/inc/threads.h"
#include <cstdint>

namespace Tsx {

/// A pointer for each thread, null at first. Where the system has no slot left, a line tells the debugger, and every
/// thread counts as having null for good.
class CTlsSlot {
public:
    CTlsSlot();
    ~CTlsSlot();
    CTlsSlot(const CTlsSlot&) = delete;
    CTlsSlot& operator=(const CTlsSlot&) = delete;

    void* Get() const { return Platform::TlsGetValue(index); }
    void Set(void* value) const { Platform::TlsSetValue(index, value); }

private:
    std::uint32_t index;
};

} // namespace Tsx
