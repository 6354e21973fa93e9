// The guard around the program: what it raises becomes an exit code, and a program whose static construction failed
// does not start.
#include "app/CorvaneApplication.h"
#include "foundation/inc/failureguard.h"
#include "foundation/inc/threadobject.h"
#include "platform/inc/process.h"

using namespace Tsx;

namespace {

constexpr std::int32_t FailureExitCode = -1;

/// Failures may be thrown while this lives: there is somebody to catch them.
class CExceptionsAllowed {
public:
    explicit CExceptionsAllowed(CThreadErrorMode& threadMode) : mode(threadMode) { mode.NoExceptions = false; }
    ~CExceptionsAllowed() { mode.NoExceptions = true; }
    CExceptionsAllowed(const CExceptionsAllowed&) = delete;
    CExceptionsAllowed& operator=(const CExceptionsAllowed&) = delete;

private:
    CThreadErrorMode& mode;
};

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
    const CExceptionsAllowed scope(mode);
    std::int32_t exitCode = FailureExitCode;
    RunAndShowFailure([&exitCode] { exitCode = ProgramBody(); });
    return exitCode;
}
