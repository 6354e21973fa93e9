#include "platform/inc/debug.h"

#include "platform/win32/windowsapi.h"

namespace Platform {

void OutputDebugString(const char16_t* text) {
    ::OutputDebugStringW(Wide(text));
}

bool IsDebuggerPresent() {
    return ::IsDebuggerPresent() != FALSE;
}

void DebugBreak() {
    ::DebugBreak();
}

OsVersion GetVersionEx() {
    OSVERSIONINFOW info{};
    info.dwOSVersionInfoSize = sizeof(info);
    ::GetVersionExW(&info);
    return {info.dwPlatformId, info.dwMajorVersion, info.dwMinorVersion};
}

} // namespace Platform
