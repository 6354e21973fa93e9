#include "platform/inc/registry.h"

#include "platform/inc/lasterror.h"
#include "platform/win32/systemlibrary.h"
#include "platform/win32/windowsapi.h"

namespace Platform {

namespace {

// One start reads some ten settings with five calls each: an entry is looked up once.
template <class TFunction>
TFunction* RegistryProcedure(const char* name) {
    return SystemProcedure<TFunction>(u"advapi32.dll", name);
}

HKEY Native(RegistryKey key) {
    return static_cast<HKEY>(key);
}

} // namespace

std::uint32_t RegOpenKeyEx(RegistryKey key, const char16_t* path, std::uint32_t options, std::uint32_t access,
                           RegistryKey& opened) {
    static auto* const open = RegistryProcedure<decltype(::RegOpenKeyExW)>("RegOpenKeyExW");
    HKEY handle = nullptr;
    const LSTATUS result = open ? open(Native(key), Wide(path), options, access, &handle) : ERROR_PROC_NOT_FOUND;
    opened = result == ERROR_SUCCESS ? handle : nullptr;
    return static_cast<std::uint32_t>(result);
}

std::uint32_t RegCreateKeyEx(RegistryKey key, const char16_t* path, std::uint32_t options, std::uint32_t access,
                             RegistryKey& opened) {
    static auto* const create = RegistryProcedure<decltype(::RegCreateKeyExW)>("RegCreateKeyExW");
    HKEY handle = nullptr;
    const LSTATUS result = create
                               ? create(Native(key), Wide(path), 0, nullptr, options, access, nullptr, &handle, nullptr)
                               : ERROR_PROC_NOT_FOUND;
    opened = result == ERROR_SUCCESS ? handle : nullptr;
    return static_cast<std::uint32_t>(result);
}

std::uint32_t RegCloseKey(RegistryKey key) {
    static auto* const close = RegistryProcedure<decltype(::RegCloseKey)>("RegCloseKey");
    return close ? static_cast<std::uint32_t>(close(Native(key))) : ErrorProcedureNotFound;
}

std::uint32_t RegQueryValueEx(RegistryKey key, const char16_t* name, std::uint32_t* type, void* data,
                              std::uint32_t* size) {
    static auto* const query = RegistryProcedure<decltype(::RegQueryValueExW)>("RegQueryValueExW");
    static_assert(sizeof(DWORD) == sizeof(*type));
    const LSTATUS result = query ? query(Native(key), Wide(name), nullptr, reinterpret_cast<DWORD*>(type),
                                         static_cast<BYTE*>(data), reinterpret_cast<DWORD*>(size))
                                 : ERROR_PROC_NOT_FOUND;
    return static_cast<std::uint32_t>(result);
}

std::uint32_t RegQueryValueExA(RegistryKey key, const char* name, std::uint32_t* type, void* data,
                               std::uint32_t* size) {
    static auto* const query = RegistryProcedure<decltype(::RegQueryValueExA)>("RegQueryValueExA");
    const LSTATUS result = query ? query(Native(key), name, nullptr, reinterpret_cast<DWORD*>(type),
                                         static_cast<BYTE*>(data), reinterpret_cast<DWORD*>(size))
                                 : ERROR_PROC_NOT_FOUND;
    return static_cast<std::uint32_t>(result);
}

std::uint32_t RegSetValueEx(RegistryKey key, const char16_t* name, std::uint32_t type, const void* data,
                            std::uint32_t size) {
    static auto* const set = RegistryProcedure<decltype(::RegSetValueExW)>("RegSetValueExW");
    const LSTATUS result =
        set ? set(Native(key), Wide(name), 0, type, static_cast<const BYTE*>(data), size) : ERROR_PROC_NOT_FOUND;
    return static_cast<std::uint32_t>(result);
}

} // namespace Platform
