#include "foundation/inc/lineends.h"
#include "foundation/inc/messagehandlers.h"
#include "foundation/src/statics.h"
#include "platform/inc/files.h"

namespace Tsx {

namespace {

using namespace Platform;

bool IsMissing(Handle handle) {
    return !handle || handle == InvalidHandle();
}

// A text that cannot be written is lost: there is nowhere left to say so.
void WriteOrLose(Handle file, const void* bytes, std::size_t size) {
    std::uint32_t written = 0;
    WriteFile(file, bytes, static_cast<std::uint32_t>(size), written);
}

} // namespace

CConsoleMessageHandler::CConsoleMessageHandler(Handle standardOutput)
    : output(standardOutput), fileType(IsMissing(output) ? 0 : GetFileType(output) & ~FileTypeRemote) {}

bool CConsoleMessageHandler::BeginsWithMark() const {
    std::int64_t kept = 0;
    if (!SetFilePointerEx(output, 0, kept, FileCurrent) || kept == 0) {
        return false;
    }
    std::int64_t moved = 0;
    unsigned char start[2] = {};
    std::uint32_t read = 0;
    const bool found = SetFilePointerEx(output, 0, moved, FileBegin) && ReadFile(output, start, sizeof(start), read) &&
                       read == sizeof(start) && start[0] == 0xFF && start[1] == 0xFE;
    SetFilePointerEx(output, kept, moved, FileBegin);
    return found;
}

void CConsoleMessageHandler::DecideEncoding() {
    asAnsi = fileType == FileTypeDisk ? !BeginsWithMark() : fileType != FileTypeChar;
    asAnsiKnown = true;
}

std::int32_t CConsoleMessageHandler::ShowMessageBox(Window owner, const char16_t* text, const char16_t* title,
                                                    std::uint32_t style) {
    static_cast<void>(owner);
    static_cast<void>(title);
    const CCriticalSectionLock guard(ConsoleHandlerLock);
    if (!asAnsiKnown) {
        DecideEncoding();
    }
    const CUnicodeString line = WithCarriageReturns(text) + u"\r\n";
    if (fileType == FileTypeChar) {
        std::uint32_t written = 0;
        WriteConsole(output, line.Text(), static_cast<std::uint32_t>(line.Length()), written);
    } else if (asAnsi) {
        const CString bytes = line.ToNarrow(AnsiCodePage);
        WriteOrLose(output, bytes.Text(), static_cast<std::size_t>(bytes.Length()));
    } else {
        WriteOrLose(output, line.Text(), static_cast<std::size_t>(line.Length()) * sizeof(char16_t));
    }
    return GetDefaultButton(style);
}

} // namespace Tsx
