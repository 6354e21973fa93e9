#include "foundation/inc/DllTools.h"

#include "foundation/inc/failureguard.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/messagenames.h"
#include "foundation/inc/modulelist.h"
#include "platform/inc/modules.h"
#include <utility>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\dlltools";

} // namespace

CDll::~CDll() {
    GuardDestructor([this] { CDll::Free(); });
}

void CDll::Free() {
    if (!Handle) {
        return;
    }
    const Platform::Module module = std::exchange(Handle, nullptr);
    if (Ownership == 1) {
        Platform::FreeLibrary(module);
    } else {
        TSX_ASSERT_AT(Ownership == 0, ModuleName, 73);
    }
}

void CDll::Load(const char16_t* name) {
    TSX_REQUIRE_AT(!Handle, ModuleName, 34);
    Ownership = 1;
    Handle = LoadLibraryInThisMode(name);
    if (!Handle) {
        GenerateExceptionFromLastError();
    }
}

CUnicodeString CDll::GetPath() const {
    TSX_REQUIRE_AT(Handle, ModuleName, 81, {});
    return FileSystem::GetModulePath(Handle);
}

Platform::Procedure CDll::GetProcedure(const char* name) const {
    TSX_REQUIRE_AT(Handle, ModuleName, 93, nullptr);
    const Platform::Procedure entry = Platform::GetProcAddress(Handle, name);
    if (!entry) {
        const CUnicodeString place = CUnicodeString::Format(u"%s (%s)", GetPath(), CUnicodeString(name, AnsiCodePage));
        GenerateCheckException(ERR_CANT_LOAD_DLL, place.Text(), u"");
    }
    return entry;
}

} // namespace Tsx
