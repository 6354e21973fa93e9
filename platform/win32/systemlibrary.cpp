#include "platform/win32/systemlibrary.h"

#include "platform/win32/windowsapi.h"

namespace Platform {

Procedure SystemProcedure(const char16_t* library, const char* name) {
    HMODULE module = ::LoadLibraryExW(Wide(library), nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    return module ? reinterpret_cast<Procedure>(::GetProcAddress(module, name)) : nullptr;
}

} // namespace Platform
