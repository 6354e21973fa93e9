// The debug flags of the process, a sum of these bits. The start of the foundation sets them; whatever offers a help to
// developers reads them, on any thread.
#pragma once

#include <cstdint>

namespace Tsx {

constexpr std::uint32_t DebugKeepTempFiles = 0x1;
constexpr std::uint32_t DebugSaveUndefinedMessages = 0x2;
constexpr std::uint32_t DebugWalkHeapForLeaks = 0x4;
constexpr std::uint32_t DebugEnableHeapSwitching = 0x8;
constexpr std::uint32_t DebugShowHeapMemoryLeaks = 0x10;
constexpr std::uint32_t DebugBreakOnMemoryException = 0x20;
constexpr std::uint32_t DebugUnused = 0x40; // AS DESIGNED: on from the start, and without a meaning
constexpr std::uint32_t DebugUnloadLibraries = 0x80;
constexpr std::uint32_t DebugCheckAllResourceModulesExistance = 0x100;
constexpr std::uint32_t DebugReportMemoryErrorInMessageBox = 0x200;
constexpr std::uint32_t DebugSaveAllMessages = 0x400;
constexpr std::uint32_t DebugCheckMessagesParamsCount = 0x800;
constexpr std::uint32_t DebugSilenceTrace = 0x2000;

std::uint32_t GetDebugFlags();
void SetDebugFlag(std::uint32_t bit, bool on);
/// Sets the flags that have a user's setting. A missing or empty value leaves a flag as it is; a text that is no bool
/// clears it.
void ReadDebugFlags();

inline bool HasDebugFlag(std::uint32_t bit) {
    return (GetDebugFlags() & bit) != 0;
}

} // namespace Tsx
