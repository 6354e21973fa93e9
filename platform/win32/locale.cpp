#include "platform/inc/locale.h"

#include "platform/win32/windowsapi.h"

namespace Platform {

std::uint32_t GetUserDefaultLCID() {
    return ::GetUserDefaultLCID();
}

std::uint32_t GetSystemDefaultLCID() {
    return ::GetSystemDefaultLCID();
}

std::uint16_t GetSystemDefaultLangID() {
    return ::GetSystemDefaultLangID();
}

bool IsValidLocale(std::uint32_t lcid, std::uint32_t flags) {
    return ::IsValidLocale(lcid, flags) != 0;
}

} // namespace Platform
