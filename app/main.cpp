// ProgramMain, which the system's entry (platform/*/entry.cpp) calls: the guard around the program. What the program
// raises becomes an exit code, and a program whose static construction failed does not start.
#include "app/CorvaneApplication.h"
#include "foundation/inc/failureguard.h"
#include "foundation/inc/scopeexit.h"
#include "foundation/inc/threadobject.h"
#include "platform/inc/process.h"

using namespace Tsx;

namespace {

constexpr std::int32_t FailureExitCode = -1;

std::int32_t ProgramBody() {
    CCorvaneApplication application;
    return application.Execute();
}

} // namespace

std::int32_t ProgramMain() {
    CThreadErrorMode& mode = *ThreadErrorMode.Get();
    if (mode.ErrorReported) {
        return FailureExitCode;
    }
    mode.NoExceptions = false; // from here on, what is thrown is caught
    const CScopeExit forbid([&mode] { mode.NoExceptions = true; });
    std::int32_t exitCode = FailureExitCode;
    RunAndShowFailure([&exitCode] { exitCode = ProgramBody(); });
    return exitCode;
}
