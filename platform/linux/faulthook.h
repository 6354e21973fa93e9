// The hook of fault injection: PLATFORM_FAULT is the first line of every function of this layer that can fail. A
// function that releases something (CloseHandle, FindClose) has it behind the release: an injected failure then leaks
// nothing by itself, and a leak that a sweep finds is a caller's.
#pragma once

#include "platform/inc/faults.h"

#ifdef PLATFORM_FAULTS

namespace Platform {

/// The plan "*" leaves StandardNew out, for test programs use `new` themselves: only the plan "new" names it.
enum class CallKind { Call, Allocation, StandardNew };

/// Counts one call of `function`. True when the plan says that it fails; the last error then is the plan's code.
bool FaultDue(const char* function, CallKind kind = CallKind::Call) noexcept;

/// The bytes that one transfer moves at most, of `wanted`.
std::uint32_t TransferSize(std::uint32_t wanted) noexcept;

} // namespace Platform

/// PLATFORM_FAULT(CreateFile, InvalidHandle()): leaves the function with that result when its turn to fail has come.
#define PLATFORM_FAULT(function, failure)                                                                              \
    do {                                                                                                               \
        if (::Platform::FaultDue(#function)) {                                                                         \
            return failure;                                                                                            \
        }                                                                                                              \
    } while (false)
/// The same for a function that allocates memory: noexcept, null on failure.
#define PLATFORM_ALLOCATION_FAULT(function)                                                                            \
    do {                                                                                                               \
        if (::Platform::FaultDue(#function, ::Platform::CallKind::Allocation)) {                                       \
            return nullptr;                                                                                            \
        }                                                                                                              \
    } while (false)
/// PLATFORM_TRANSFER(count): cuts the bytes that a ReadFile or WriteFile is to move.
#define PLATFORM_TRANSFER(count) count = ::Platform::TransferSize(count)
#else
#define PLATFORM_TRANSFER(count) static_cast<void>(0)
#define PLATFORM_ALLOCATION_FAULT(function) static_cast<void>(0)
#define PLATFORM_FAULT(function, failure) static_cast<void>(0)
#endif
