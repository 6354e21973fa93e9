#include "platform/inc/process.h"

#include "platform/win32/windowsapi.h"
#include <cstdlib>

namespace Platform {

const char16_t* GetCommandLine() {
    return reinterpret_cast<const char16_t*>(::GetCommandLineW());
}

std::uint32_t GetCurrentProcessId() {
    return ::GetCurrentProcessId();
}

std::uint32_t SetErrorMode(std::uint32_t mode) {
    return ::SetErrorMode(mode);
}

void Abort() {
    std::abort();
}

} // namespace Platform
