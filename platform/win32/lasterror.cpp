#include "platform/inc/lasterror.h"

#include "platform/win32/windowsapi.h"

namespace Platform {

std::uint32_t GetLastError() {
    return ::GetLastError();
}

void SetLastError(std::uint32_t code) {
    ::SetLastError(code);
}

} // namespace Platform
