#include "platform/inc/installer.h"

#include "platform/inc/lasterror.h"
#include "platform/win32/systemlibrary.h"
#include "platform/win32/windowsapi.h"

namespace Platform {

namespace {

// As msi.h declares it.
using ProvideEntry = UINT WINAPI(LPCWSTR, LPCWSTR, DWORD, LPWSTR, LPDWORD);

} // namespace

std::uint32_t MsiProvideQualifiedComponent(const char16_t* component, const char16_t* qualifier,
                                           std::uint32_t installMode, char16_t* path, std::uint32_t& size) {
    auto* entry = SystemProcedure<ProvideEntry>(u"msi.dll", "MsiProvideQualifiedComponentW");
    static_assert(sizeof(DWORD) == sizeof(size));
    return entry ? entry(Wide(component), Wide(qualifier), installMode, Wide(path), reinterpret_cast<DWORD*>(&size))
                 : ErrorProcedureNotFound;
}

} // namespace Platform
