// The one table from errno values to Windows error codes.
#pragma once

#include "platform/inc/lasterror.h"

#include <cerrno>
#include <cstdint>
#include <utility>

namespace Platform {

/// The Windows code for an errno value; ERROR_GEN_FAILURE for one that is not in the table.
std::uint32_t WindowsErrorCode(int errnoValue);

/// Sets the last error and gives what the function that fails is to end with, false where nothing is said. The second
/// one takes the error from the present errno.
template <class TResult = bool>
TResult Fail(std::uint32_t code, TResult result = {}) {
    SetLastError(code);
    return result;
}

template <class TResult = bool>
TResult FailFromErrno(TResult result = {}) {
    return Fail(WindowsErrorCode(errno), std::move(result));
}

} // namespace Platform
