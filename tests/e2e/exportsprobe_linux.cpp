// Loaded in front of the program by the dynamic loader, which refuses to load a program as a library: looks at the
// program's exports and ends the process before the program begins.
#include "tests/e2e/exportsprobe.h"
#include <dlfcn.h>
#include <unistd.h>

namespace {

template <class TFunction>
void Bind(TFunction& function, const char* name) {
    function = reinterpret_cast<TFunction>(dlsym(RTLD_DEFAULT, name));
}

__attribute__((constructor)) void Probe() {
    ExportsProbe::Functions functions{};
    Bind(functions.GetResourceID, "GetResourceID");
    Bind(functions.NumberOfMessages, "NumberOfMessages");
    Bind(functions.GetMessageName, "GetMessageName");
    Bind(functions.GetMessageSystemVersion, "GetMessageSystemVersion");
    const int faults = ExportsProbe::Check(functions);
    std::fflush(stdout);
    _exit(faults == 0 ? 0 : 1);
}

} // namespace
