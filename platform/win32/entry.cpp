#include "platform/inc/process.h"

#include "platform/win32/windowsapi.h"

// The run-time's wide entry. Its arguments go unused: the program asks the system for the whole command line.
extern "C" int wmain() {
    return ProgramMain();
}
