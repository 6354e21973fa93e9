// The stop modes: whether a failure stops in the debugger.
#include "foundation/inc/errors.h"

#include "foundation/inc/settings.h"
#include "foundation/src/statics.h"
#include "platform/inc/lasterror.h"

namespace Tsx {

namespace {

constexpr std::uint32_t NotRead = 0;

struct CStopMode {
    const char16_t* setting;
    std::uint32_t byDefault;
    std::atomic<std::uint32_t> mode{NotRead};
    bool reading = false; // under StopModeLock
};

constinit CStopMode assertStopMode{u"AssertStopMode", StopInDebugger};
constinit CStopMode errorStopMode{u"ErrorStopMode", StopNever};

std::uint32_t ReadMode(const CStopMode& stop) {
    struct Row {
        const char16_t* text;
        std::uint32_t mode;
    };
    constexpr Row rows[] = {{u"Always", StopAlways}, {u"Never", StopNever}, {u"Debug", StopInDebugger}};
    const CUnicodeString value = GetUserSetting(stop.setting, u"");
    for (const Row& row : rows) {
        if (value.CompareNoCase(row.text) == 0) {
            return row.mode;
        }
    }
    return stop.byDefault;
}

std::uint32_t GetMode(CStopMode& stop) {
    if (const std::uint32_t known = stop.mode; known != NotRead) {
        return known;
    }
    // The failure that asks may be a Windows call whose code is still to be looked at.
    const std::uint32_t lastError = Platform::GetLastError();
    const CCriticalSectionLock guard(StopModeLock);
    if (stop.mode == NotRead && !stop.reading) {
        stop.reading = true; // a failure in the reading itself finds the default and doesn't read again
        try {
            stop.mode = ReadMode(stop);
        } catch (CException* exception) {
            delete exception; // memory is exhausted; the next failure may have more luck
        }
        stop.reading = false;
    }
    Platform::SetLastError(lastError);
    return stop.mode == NotRead ? stop.byDefault : stop.mode.load();
}

} // namespace

std::uint32_t GetAssertStopMode() {
    return GetMode(assertStopMode);
}

std::uint32_t GetErrorStopMode() {
    return GetMode(errorStopMode);
}

} // namespace Tsx
