#include "tests/support/standardoutput.h"

#include <windows.h>

const bool CStandardOutput::HasTerminals = false;

std::pair<Platform::Handle, Platform::Handle> OpenPipe(bool) {
    HANDLE reading = nullptr;
    HANDLE writing = nullptr;
    ::CreatePipe(&reading, &writing, nullptr, 0x10000);
    return {reading, writing};
}
