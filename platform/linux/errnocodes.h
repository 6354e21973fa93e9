// The one table from errno values to Windows error codes.
#pragma once

#include <cstdint>

namespace Platform {

/// The Windows code for an errno value; ERROR_GEN_FAILURE for one that is not in the table.
std::uint32_t WindowsErrorCode(int errnoValue);

/// Sets the last error from the present errno.
void SetLastErrorFromErrno();

/// Sets the last error; false, so that a function can end with it.
bool Fail(std::uint32_t code);
bool FailFromErrno();

} // namespace Platform
