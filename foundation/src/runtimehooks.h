// What the C++ run-time calls where a program has gone wrong for good.
#pragma once

namespace Tsx {

/// For the time before main, where nobody catches: exhausted memory, the one failure that is raised there, ends the
/// process with its notice. What stood before serves wherever failures may be thrown.
void InstallStaticStageHook();

/// Installs ours: a failure that nobody catches ends the process with a notice (unless FatalNoMessageBox), a call of a
/// pure virtual function ends it silently.
void InstallRuntimeHooks();
/// Puts back what stood before.
void RestoreRuntimeHooks();

} // namespace Tsx
