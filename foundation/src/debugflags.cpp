#include "foundation/inc/debugflags.h"

#include "foundation/inc/settings.h"
#include <atomic>

namespace Tsx {

namespace {

std::atomic<std::uint32_t> DebugFlags{DebugEnableHeapSwitching | DebugUnused};

struct CFlagSetting {
    const char16_t* name;
    std::uint32_t bit;
};

constexpr CFlagSetting FlagSettings[] = {
    {u"BreakOnMemoryException", DebugBreakOnMemoryException},
    {u"EnableHeapSwitching", DebugEnableHeapSwitching},
    {u"SaveUndefinedMessages", DebugSaveUndefinedMessages},
    {u"KeepTempFiles", DebugKeepTempFiles},
    {u"UnloadLibraries", DebugUnloadLibraries},
    {u"ShowHeapMemoryLeaks", DebugShowHeapMemoryLeaks},
    {u"CheckAllResourceModulesExistance", DebugCheckAllResourceModulesExistance},
    {u"ReportMemoryErrorInMessageBox", DebugReportMemoryErrorInMessageBox},
    {u"SaveAllMessages", DebugSaveAllMessages},
    {u"CheckMessagesParamsCount", DebugCheckMessagesParamsCount},
};

void ReadDebugFlag(const CFlagSetting& setting) {
    const CUnicodeString value = GetUserSetting(setting.name, u"");
    if (!value.IsEmpty()) {
        bool on = false; // and stays so for a text that says neither yes nor no
        SetDebugFlag(setting.bit, value.ToBool(on) && on);
    }
}

} // namespace

std::uint32_t GetDebugFlags() {
    return DebugFlags.load(std::memory_order_relaxed);
}

void SetDebugFlag(std::uint32_t bit, bool on) {
    if (on) {
        DebugFlags |= bit;
    } else {
        DebugFlags &= ~bit;
    }
}

void ReadDebugFlags() {
    for (const CFlagSetting& setting : FlagSettings) {
        ReadDebugFlag(setting);
    }
}

} // namespace Tsx
