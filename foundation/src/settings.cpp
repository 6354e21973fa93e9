#include "foundation/inc/settings.h"

#include "foundation/inc/registrykey.h"

namespace Tsx {

namespace {

CUnicodeString GetSetting(std::uint32_t root, const char16_t* name, const char16_t* defaultValue) {
    CRegistryKey key;
    key.Open(Platform::RootKey(root), u"Software\\Ostrel\\Tessarix", RK_Read);
    return key.GetStringValue(name, defaultValue);
}

} // namespace

CUnicodeString GetUserSetting(const char16_t* name, const char16_t* defaultValue) {
    return GetSetting(Platform::HkeyCurrentUser, name, defaultValue);
}

CUnicodeString GetMachineSetting(const char16_t* name, const char16_t* defaultValue) {
    return GetSetting(Platform::HkeyLocalMachine, name, defaultValue);
}

} // namespace Tsx
