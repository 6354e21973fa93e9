// windows.h for the sources of this folder: included last, by sources alone. Its macros would rename the functions of
// this layer, so they are taken away again; the sources call the wide functions by their full names.
#pragma once

#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX // the standard library may have it already
#define NOMINMAX
#endif
#include <windows.h>

#undef CopyFile
#undef CreateDirectory
#undef CreateFile
#undef CreateFileMapping
#undef DeleteFile
#undef ExpandEnvironmentStrings
#undef FindFirstFile
#undef FindNextFile
#undef FindResource
#undef FormatMessage
#undef GetCommandLine
#undef GetDiskFreeSpaceEx
#undef GetDriveType
#undef GetFileAttributes
#undef GetFileAttributesEx
#undef GetFileVersionInfo
#undef GetFileVersionInfoSize
#undef GetFullPathName
#undef GetModuleFileName
#undef GetModuleHandle
#undef GetModuleHandleEx
#undef GetSystemDirectory
#undef GetVersionEx
#undef LoadLibraryEx
#undef LoadString
#undef MessageBox
#undef MessageBoxIndirect
#undef MoveFile
#undef MoveFileEx
#undef OutputDebugString
#undef RegCreateKeyEx
#undef RegOpenKeyEx
#undef RegQueryValueEx
#undef RegSetValueEx
#undef RegisterEventSource
#undef RemoveDirectory
#undef ReportEvent
#undef SearchPath
#undef SetDllDirectory
#undef SetFileAttributes
#undef VerQueryValue
#undef WriteConsole
#undef Yield
#undef YieldProcessor

#include "platform/inc/types.h"

namespace Platform {

// On this system wchar_t and char16_t are the same 16 bits under two names.
inline const wchar_t* Wide(const char16_t* text) {
    return reinterpret_cast<const wchar_t*>(text);
}
inline wchar_t* Wide(char16_t* text) {
    return reinterpret_cast<wchar_t*>(text);
}

inline HMODULE Native(Module module) {
    return reinterpret_cast<HMODULE>(module);
}
inline HWND Native(Window window) {
    return reinterpret_cast<HWND>(window);
}

} // namespace Platform
