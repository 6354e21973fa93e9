// exportsprobe PROGRAM: loads the program as a module, without starting it, and looks at its exports.
#include "tests/e2e/exportsprobe.h"
#include <windows.h>

namespace {

template <class TFunction>
void Bind(TFunction& function, HMODULE module, const char* name) {
    function = reinterpret_cast<TFunction>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    const HMODULE module = argc == 2 ? ::LoadLibraryW(argv[1]) : nullptr;
    if (!module) {
        std::puts("the program cannot be loaded");
        return 1;
    }
    ExportsProbe::Functions functions{};
    Bind(functions.GetResourceID, module, "GetResourceID");
    Bind(functions.NumberOfMessages, module, "NumberOfMessages");
    Bind(functions.GetMessageName, module, "GetMessageName");
    Bind(functions.GetMessageSystemVersion, module, "GetMessageSystemVersion");
    return ExportsProbe::Check(functions) == 0 ? 0 : 1;
}
