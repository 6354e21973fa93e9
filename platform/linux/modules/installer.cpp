// No installer of this system keeps components by the numbers that are asked for.
#include "platform/inc/installer.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/faulthook.h"

namespace Platform {

std::uint32_t MsiProvideQualifiedComponent(const char16_t*, const char16_t*, std::uint32_t, char16_t*, std::uint32_t&) {
    PLATFORM_FAULT(MsiProvideQualifiedComponent, GetLastError());
    return ErrorUnknownComponent;
}

} // namespace Platform
