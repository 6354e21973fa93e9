#include "platform/linux/text/loadfailure.h"

#include "platform/inc/debug.h"
#include "platform/inc/lasterror.h"
#include "platform/linux/text/nativetext.h"
#include <dlfcn.h>
#include <unistd.h>

namespace Platform {

namespace {

// Without a destructor, so that it is valid until the end of the thread: failures are put into words even then.
struct ModuleError {
    std::uint32_t code;
    std::size_t length;
    char words[500];
};
thread_local ModuleError latest{};

// The loader's message begins with the file that it could not load: the library itself, or one that it depends on.
std::uint32_t LoaderErrorCode(const std::string& file, std::string_view said) {
    if (access(file.c_str(), R_OK) != 0) {
        return ErrorAccessDenied;
    }
    if (!said.starts_with(file + ":")) {
        return ErrorModuleNotFound;
    }
    const bool lacksSymbol = said.find("undefined symbol", file.size()) != std::string_view::npos;
    return lacksSymbol ? ErrorProcedureNotFound : ErrorBadExeFormat;
}

} // namespace

void SetModuleError(std::uint32_t code, std::string_view words) {
    SetLastError(code);
    latest.code = code;
    latest.length = words.copy(latest.words, sizeof(latest.words));
}

void SetModuleErrorFromLoader(const std::string& file) {
    const char* const error = dlerror();
    const std::string said = error ? error : "";
    OutputDebugString(Utf16Text(said + "\n").c_str());
    SetModuleError(LoaderErrorCode(file, said), said);
}

std::string_view ModuleErrorWords(std::uint32_t code) {
    return latest.code == code ? std::string_view(latest.words, latest.length) : std::string_view();
}

} // namespace Platform
