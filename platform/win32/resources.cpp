#include "platform/inc/resources.h"

#include "platform/win32/systemlibrary.h"
#include "platform/win32/windowsapi.h"

namespace Platform {

namespace {

constexpr const char16_t* VersionLibrary = u"version.dll";

} // namespace

bool FindResource(Module module, const char16_t* name, std::uint32_t type) {
    return ::FindResourceW(Native(module), Wide(name), MAKEINTRESOURCEW(type)) != nullptr;
}

std::int32_t LoadString(Module module, std::uint32_t id, char16_t* buffer, std::int32_t size) {
    // Asked for every text, so that it is looked up once.
    static auto* const load = SystemProcedure<decltype(::LoadStringW)>(u"user32.dll", "LoadStringW");
    return load ? load(reinterpret_cast<HINSTANCE>(module), id, Wide(buffer), size) : 0;
}

std::uint32_t GetFileVersionInfoSize(const char16_t* path) {
    auto* ask = SystemProcedure<decltype(::GetFileVersionInfoSizeW)>(VersionLibrary, "GetFileVersionInfoSizeW");
    DWORD unused = 0;
    return ask ? ask(Wide(path), &unused) : 0;
}

bool GetFileVersionInfo(const char16_t* path, std::uint32_t size, void* block) {
    auto* read = SystemProcedure<decltype(::GetFileVersionInfoW)>(VersionLibrary, "GetFileVersionInfoW");
    return read && read(Wide(path), 0, size, block);
}

bool VerQueryValue(const void* block, std::uint32_t, const char16_t* subBlock, const void*& value,
                   std::uint32_t& length) {
    auto* query = SystemProcedure<decltype(::VerQueryValueW)>(VersionLibrary, "VerQueryValueW");
    void* found = nullptr;
    UINT count = 0;
    if (!block || !query || !query(block, Wide(subBlock), &found, &count)) {
        return false;
    }
    value = found;
    length = count;
    return true;
}

} // namespace Platform
