#include "platform/inc/environment.h"

#include "platform/win32/windowsapi.h"

namespace Platform {

std::uint32_t ExpandEnvironmentStrings(const char16_t* text, char16_t* buffer, std::uint32_t size) {
    return ::ExpandEnvironmentStringsW(Wide(text), Wide(buffer), size);
}

} // namespace Platform
