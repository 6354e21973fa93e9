#include "foundation/inc/registrykey.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/messagenames.h"
#include "platform/inc/lasterror.h"

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\registrykey";

constexpr std::int32_t SystemView = 0;

struct RootName {
    std::uint32_t root;
    const char16_t* name;
};

constexpr RootName RootNames[] = {
    {Platform::HkeyClassesRoot, u"HKEY_CLASSES_ROOT"},
    {Platform::HkeyCurrentUser, u"HKEY_CURRENT_USER"},
    {Platform::HkeyLocalMachine, u"HKEY_LOCAL_MACHINE"},
    {Platform::HkeyUsers, u"HKEY_USERS"},
    {Platform::HkeyPerformanceData, u"HKEY_PERFORMANCE_DATA"},
    {Platform::HkeyPerformanceText, u"HKEY_PERFORMANCE_TEXT"},
    {Platform::HkeyPerformanceNlsText, u"HKEY_PERFORMANCE_NLSTEXT"},
    {Platform::HkeyCurrentConfig, u"HKEY_CURRENT_CONFIG"},
    {Platform::HkeyDynData, u"HKEY_DYN_DATA"},
};

CUnicodeString NameOfRoot(Platform::RegistryKey root) {
    for (const RootName& row : RootNames) {
        if (row.root == Platform::RootNumber(root)) {
            return row.name;
        }
    }
    return {};
}

std::uint32_t OpenToWrite(Platform::RegistryKey root, const char16_t* subkey, Platform::RegistryKey& handle) {
    const std::uint32_t access = CRegistryKey::GetViewAccess(SystemView) | Platform::KeyReadWrite;
    // A root is there already.
    auto* const open = *subkey ? &Platform::RegCreateKeyEx : &Platform::RegOpenKeyEx;
    return open(root, subkey, 0, access, handle);
}

// Type and size; false where there is no value to tell of. A value longer than the system likes to ask for is one.
bool QueryValue(Platform::RegistryKey key, const char16_t* name, std::uint32_t& type, std::uint32_t& size) {
    const std::uint32_t result = Platform::RegQueryValueEx(key, name, &type, nullptr, &size);
    return result == Platform::ErrorSuccess || result == Platform::ErrorMoreData;
}

} // namespace

CRegistryKey::~CRegistryKey() {
    Close();
}

std::uint32_t CRegistryKey::GetViewAccess(std::int32_t selector) {
    if (selector == 0 || selector == 2) {
        return Platform::KeyWow64_64;
    }
    TSX_ASSERT_AT(selector == 1, ModuleName, 70);
    return Platform::KeyWow64_32;
}

bool CRegistryKey::Open(Platform::RegistryKey root, const char16_t* subkey, std::int32_t mode) {
    TSX_REQUIRE_AT(!Handle, ModuleName, 89, false);
    TSX_REQUIRE_AT(Mode == RK_Closed, ModuleName, 90, false);
    TSX_REQUIRE_AT(subkey, ModuleName, 91, false);
    Mode = mode;
    Reserved = 0;
    Path = NameOfRoot(root);
    if (*subkey) {
        Path += u'\\';
        Path += subkey;
    }
    std::uint32_t result = Platform::ErrorSuccess;
    if (mode == RK_Read) {
        constexpr std::uint32_t access = Platform::KeyRead | Platform::KeyWow64_64;
        result = Platform::RegOpenKeyEx(root, subkey, 0, access, Handle);
    } else if (mode == RK_Write) {
        result = OpenToWrite(root, subkey, Handle);
    } else {
        TSX_ASSERT(false, ModuleName);
    }
    Platform::SetLastError(result);
    if (result != Platform::ErrorSuccess) {
        Handle = nullptr;
    }
    return Handle != nullptr;
}

void CRegistryKey::Close() {
    const Platform::RegistryKey handle = Handle;
    Mode = RK_Closed;
    Handle = nullptr;
    Path.Clear();
    if (handle) {
        Platform::SetLastError(Platform::RegCloseKey(handle));
    }
}

std::uint32_t CRegistryKey::GetValueType(const char16_t* name) const {
    TSX_REQUIRE_AT(Mode != RK_Closed, ModuleName, 216, 0);
    TSX_REQUIRE_AT(name, ModuleName, 217, 0);
    std::uint32_t type = 0;
    std::uint32_t size = 0;
    return Handle && QueryValue(Handle, name, type, size) ? type : 0;
}

std::int32_t CRegistryKey::GetValueSize(const char16_t* name) const {
    TSX_REQUIRE_AT(Mode != RK_Closed, ModuleName, 233, 0);
    TSX_REQUIRE_AT(name, ModuleName, 234, 0);
    std::uint32_t type = 0;
    std::uint32_t size = 0;
    return Handle && QueryValue(Handle, name, type, size) ? static_cast<std::int32_t>(size) : 0;
}

std::int32_t CRegistryKey::GetBinaryValue(const char16_t* name, void* buffer, std::int32_t size) const {
    TSX_REQUIRE_AT(Mode != RK_Closed, ModuleName, 247, 0);
    TSX_REQUIRE_AT(name, ModuleName, 248, 0);
    TSX_REQUIRE_AT(size >= 0, ModuleName, 249, 0);
    TSX_REQUIRE_AT(buffer || size == 0, ModuleName, 250, 0);
    auto bytes = static_cast<std::uint32_t>(size);
    if (!Handle || Platform::RegQueryValueEx(Handle, name, nullptr, buffer, &bytes) != Platform::ErrorSuccess) {
        return 0;
    }
    return static_cast<std::int32_t>(bytes);
}

CUnicodeString CRegistryKey::GetStringValue(const char16_t* name, const char16_t* defaultText) const {
    TSX_REQUIRE_AT(Mode != RK_Closed, ModuleName, 263, defaultText);
    TSX_REQUIRE_AT(name && defaultText, ModuleName, 264, defaultText);
    if (!Handle) {
        return defaultText;
    }
    const std::uint32_t type = GetValueType(name);
    if (type != Platform::RegSz && type != Platform::RegExpandSz) {
        return defaultText;
    }
    const std::int32_t size = GetValueSize(name);
    constexpr auto characterSize = static_cast<std::int32_t>(sizeof(char16_t));
    if (size <= 0 || size % characterSize != 0) {
        return defaultText;
    }
    const std::int32_t count = size / characterSize;
    CUnicodeString text;
    char16_t* buffer = text.GetBuffer(count);
    if (GetBinaryValue(name, buffer, size) != size) {
        return defaultText;
    }
    // One terminator is cut, and only one.
    text.SetLength(buffer[count - 1] == u'\0' ? count - 1 : count);
    return text;
}

void CRegistryKey::SetStringValue(const char16_t* name, const char16_t* text, std::int32_t size) {
    TSX_REQUIRE_AT(text, ModuleName, 301);
    TSX_REQUIRE_AT(Mode == RK_Write, ModuleName, 302);
    TSX_REQUIRE(size >= 0, ModuleName);
    if (!Handle) {
        GenerateCheckException(ERR_CANT_WRITE_TO_REGISTRY, Path.Text(), u"");
        return;
    }
    const auto bytes = static_cast<std::uint32_t>(size);
    if (Platform::RegSetValueEx(Handle, name, Platform::RegSz, text, bytes) != Platform::ErrorSuccess) {
        const CUnicodeString place = Path + u'\\' + CUnicodeString(name);
        GenerateCheckException(ERR_CANT_WRITE_TO_REGISTRY, place.Text(), u"");
    }
}

} // namespace Tsx
