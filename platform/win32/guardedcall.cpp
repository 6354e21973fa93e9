#include "platform/inc/guardedcall.h"

#include "platform/win32/windowsapi.h"
#include <cfloat>
#include <cstddef>
#include <malloc.h>

// The standard library names its own try by this word, which is the guard's here.
#undef __try

namespace Platform {

static_assert(sizeof(ExceptionRecord) == sizeof(EXCEPTION_RECORD));
static_assert(offsetof(ExceptionRecord, ExceptionAddress) == offsetof(EXCEPTION_RECORD, ExceptionAddress));
static_assert(offsetof(ExceptionRecord, ExceptionInformation) == offsetof(EXCEPTION_RECORD, ExceptionInformation));
static_assert(sizeof(ExceptionPointers) == sizeof(EXCEPTION_POINTERS));

bool GuardedCall(void (*body)(void* context), ExceptionFilter filter, void* context) {
    // Filter and unwinding run on the stack that has overflowed: the two pages that are kept for them don't suffice.
    ULONG keptForHandlers = 0x10000;
    ::SetThreadStackGuarantee(&keptForHandlers);
    // Noted by the filter, for what follows it is not told the code by every system: by Wine it isn't.
    bool hasOverflowed = false;
    __try {
        body(context);
    } __except (
        hasOverflowed = GetExceptionCode() == ExceptionStackOverflow,
        filter(*static_cast<const ExceptionPointers*>(static_cast<void*>(GetExceptionInformation())), context)) {
        if (hasOverflowed) {
            // The page at the stack's end gave its warning and is gone; without it the next overflow ends the process.
            _resetstkoflw();
        }
        return true;
    }
    return false;
}

std::uint32_t clearfp() {
    return ::_clearfp();
}

} // namespace Platform
