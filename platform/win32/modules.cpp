#include "platform/inc/modules.h"

#include "platform/inc/text.h"
#include "platform/win32/windowsapi.h"

namespace Platform {

static_assert(LoadWithAlteredSearchPath == LOAD_WITH_ALTERED_SEARCH_PATH);

Module LoadLibraryEx(const char16_t* name, std::uint32_t flags) {
    return reinterpret_cast<Module>(::LoadLibraryExW(Wide(name), nullptr, flags));
}

Module LoadLibraryA(const char* path) {
    return reinterpret_cast<Module>(::LoadLibraryA(path));
}

void FoldLibraryPath(char16_t* path) {
    for (; *path; ++path) {
        *path = towlower(*path);
    }
}

bool SetDllDirectory(const char16_t* folder) {
    return ::SetDllDirectoryW(Wide(folder)) != 0;
}

std::uint32_t GetSystemDirectory(char16_t* buffer, std::uint32_t size) {
    return ::GetSystemDirectoryW(Wide(buffer), size);
}

bool GetModuleHandleEx(std::uint32_t flags, const char16_t* name, Module& module) {
    HMODULE found = nullptr;
    const bool isLoaded = ::GetModuleHandleExW(flags, Wide(name), &found) != 0;
    module = reinterpret_cast<Module>(found);
    return isLoaded;
}

bool FreeLibrary(Module module) {
    return ::FreeLibrary(Native(module)) != 0;
}

Procedure GetProcAddress(Module module, const char* name) {
    return reinterpret_cast<Procedure>(::GetProcAddress(Native(module), name));
}

Module GetModuleHandle(const char16_t* name) {
    return reinterpret_cast<Module>(::GetModuleHandleW(Wide(name)));
}

Module GetProgramModule() {
    return reinterpret_cast<Module>(::GetModuleHandleW(nullptr));
}

std::uint32_t GetModuleFileName(Module module, char16_t* buffer, std::uint32_t size) {
    return ::GetModuleFileNameW(Native(module), Wide(buffer), size);
}

} // namespace Platform
