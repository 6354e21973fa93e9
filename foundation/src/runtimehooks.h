// The hooks that the C++ run-time calls for a failure that nobody handles. Static construction, the start and the stop
// set them.
#pragma once

namespace Tsx {

/// For the time before the start of the foundation and after its stop, static construction above all: exhausted memory
/// that nobody catches ends the process with its notice. Any other failure is left to what stood before.
void InstallOuterHook();

/// Installs ours: a failure that nobody catches ends the process with a notice (unless FatalNoMessageBox), a call of a
/// pure virtual function ends it silently.
void InstallRuntimeHooks();
/// Puts back what stood before.
void RestoreRuntimeHooks();

} // namespace Tsx
