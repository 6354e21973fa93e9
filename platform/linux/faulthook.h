// The hook of fault injection: the first line of every function of this layer that can fail.
#pragma once

#include "platform/inc/faults.h"

#ifdef PLATFORM_FAULTS

namespace Platform {

/// Counts one call of `function`. True when the plan says that it fails; the last error then is the plan's code.
bool FaultDue(const char* function) noexcept;

} // namespace Platform

/// PLATFORM_FAULT(CreateFile, InvalidHandle()): leaves the function with that result when its turn to fail has come.
#define PLATFORM_FAULT(function, failure)                                                                              \
    do {                                                                                                               \
        if (::Platform::FaultDue(#function)) {                                                                         \
            return failure;                                                                                            \
        }                                                                                                              \
    } while (false)
#else
#define PLATFORM_FAULT(function, failure) static_cast<void>(0)
#endif
