// The life of the foundation: start, stop, and what they decide. The console application calls both.
#pragma once

#include "foundation/inc/unicodestring.h"
#include "platform/inc/types.h"

namespace Tsx {

enum TFoundationState : std::int32_t {
    FS_NeverStarted = 0,
    FS_Starting = 1,
    FS_Initialised = 2,
    FS_Failed = 3,
    FS_Stopped = 4
};

TFoundationState GetFoundationState();

/// Starts the foundation; calls nest, and only the first does the work, under a lock. True when it stands ready. A
/// failure is shown here; it is final, and a failed start is never cleaned up. The paths are those of the setters
/// below.
bool InitializeFoundation(const char16_t* userRegistryPath, const char16_t* machineRegistryPath);
/// Ends what the matching call began; the last one stops the foundation, which can be started again. Raises nothing:
/// the failures of its stages are shown.
void DeinitializeFoundation();

/// Where the program keeps its own settings in the registry. A null path stands for "Software\Ostrel\" and the
/// program's title.
void SetUserRegistryPath(const char16_t* path);
void SetMachineRegistryPath(const char16_t* path);

/// Notes the module that the foundation is linked into; for its static construction. A second, different one is an
/// internal error.
void StoreProgramModule(Platform::Module module);
/// The folder of that module, with its separator.
CUnicodeString GetModuleDirectory();
/// The executable's file name without extension.
CUnicodeString GetProgramTitle();

} // namespace Tsx
