#include "platform/inc/locale.h"

#include "platform/win32/windowsapi.h"

namespace Platform {

std::uint32_t GetUserDefaultLCID() {
    return ::GetUserDefaultLCID();
}

std::uint32_t GetSystemDefaultLCID() {
    return ::GetSystemDefaultLCID();
}

} // namespace Platform
