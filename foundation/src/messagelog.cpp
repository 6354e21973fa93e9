#include "foundation/inc/messagelog.h"

#include "foundation/inc/failureguard.h"
#include "foundation/inc/file.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/foundation.h"
#include "foundation/inc/settings.h"
#include "foundation/inc/time.h"
#include "platform/inc/files.h"
#include "platform/inc/process.h"

namespace Tsx {

namespace {

bool IsLogWanted() {
    bool wanted = false;
    return GetMachineSetting(u"WriteMessageLog", u"").ToBool(wanted) && wanted;
}

CString ComposeLine(const char16_t* text) {
    Platform::SystemTime now{};
    Platform::GetLocalTime(now);
    const CUnicodeString time = FormatLocalTimeOfDay(TimeFromLocalSystemTime(now));
    const CUnicodeString start = CUnicodeString::Format(u"%sProcessID:%u ", time, Platform::GetCurrentProcessId());
    // By itself: a text that can't be converted leaves its place in the line empty.
    return start.ToNarrow(AnsiCodePage) + CUnicodeString(text).ToNarrow(AnsiCodePage) + "\r\n";
}

// One write a line, so that the lines of several processes do not mix.
void AppendLine(const CString& line) {
    CFile file;
    file.Open(FileSystem::MergeName(GetModuleDirectory(), u"TessarixLog.txt"),
              OM_Write | OM_ShareDenyWrite | OM_Create | OM_NoTruncate);
    file.Seek(0, Platform::FileEnd);
    file.Write(line.Text(), line.Length());
    file.Close();
}

} // namespace

void WriteMessageLogLine(const char16_t* text) {
    const CRuntimeHeapSwitcher switcher;
    RunSilently([text] { // a report of a lost line would itself be logged
        if (IsLogWanted()) {
            AppendLine(ComposeLine(text ? text : u""));
        }
    });
}

} // namespace Tsx
