// The stop modes: whether a failure stops in the debugger.
#include "foundation/inc/failurereport.h"

#include "foundation/inc/failureguard.h"
#include "foundation/inc/settings.h"
#include "foundation/src/statics.h"
#include "platform/inc/lasterror.h"

namespace Tsx {

namespace {

struct CStopMode {
    const char16_t* setting;
    std::uint32_t byDefault;
    std::atomic<std::uint32_t> mode{SM_NotRead};
    bool reading = false; // under StopModeLock
};

constinit CStopMode assertStopMode{u"AssertStopMode", SM_InDebugger};
constinit CStopMode errorStopMode{u"ErrorStopMode", SM_Never};

std::uint32_t ReadMode(const CStopMode& stop) {
    struct CRow {
        const char16_t* text;
        std::uint32_t mode;
    };
    constexpr CRow rows[] = {{u"Always", SM_Always}, {u"Never", SM_Never}, {u"Debug", SM_InDebugger}};
    const CUnicodeString value = GetUserSetting(stop.setting, u"");
    for (const CRow& row : rows) {
        if (value.CompareNoCase(row.text) == 0) {
            return row.mode;
        }
    }
    return stop.byDefault;
}

std::uint32_t GetMode(CStopMode& stop) {
    if (const std::uint32_t known = stop.mode; known != SM_NotRead) {
        return known;
    }
    // The failure that asks may be a Windows call whose code is still to be looked at.
    const std::uint32_t lastError = Platform::GetLastError();
    const CCriticalSectionLock guard(StopModeLock);
    if (stop.mode == SM_NotRead && !stop.reading) {
        stop.reading = true; // a failure in the reading itself finds the default and doesn't read again
        RunSilently([&stop] { stop.mode = ReadMode(stop); }); // if memory is exhausted, the next failure tries again
        stop.reading = false;
    }
    Platform::SetLastError(lastError);
    return stop.mode == SM_NotRead ? stop.byDefault : stop.mode.load();
}

} // namespace

std::uint32_t GetAssertStopMode() {
    return GetMode(assertStopMode);
}

std::uint32_t GetErrorStopMode() {
    return GetMode(errorStopMode);
}

} // namespace Tsx
