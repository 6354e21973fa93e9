// The life of the foundation: start, stop, and what they decide.
#pragma once

#include "foundation/inc/unicodestring.h"

namespace Tsx {

enum TFoundationState : std::int32_t {
    FS_NeverStarted = 0,
    FS_Starting = 1,
    FS_Initialised = 2,
    FS_Failed = 3,
    FS_Stopped = 4
};

TFoundationState GetFoundationState();

/// Starts the foundation; calls nest, and only the first does the work. True when it stands ready. A null path stands
/// for "Software\Ostrel\" and the program's title. A failure is shown here.
bool InitializeFoundation(const char16_t* userRegistryPath, const char16_t* machineRegistryPath);
/// Ends what the matching call began; the last one stops the foundation.
void DeinitializeFoundation();

/// The folder of the program's module, with its separator.
CUnicodeString GetModuleDirectory();
/// The executable's file name without extension.
CUnicodeString GetProgramTitle();

} // namespace Tsx
