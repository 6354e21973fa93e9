// The package managers of this system do not register components by GUID, so that none is ever found.
#include "platform/inc/installer.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/faulthook.h"

namespace Platform {

std::uint32_t MsiProvideQualifiedComponent(const char16_t*, const char16_t*, std::uint32_t, char16_t*, std::uint32_t&) {
    PLATFORM_FAULT(MsiProvideQualifiedComponent, GetLastError());
    return ErrorUnknownComponent;
}

} // namespace Platform
