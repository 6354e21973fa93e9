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

bool WriteWhole(Handle file, const void* bytes, std::int32_t size) {
    std::uint32_t written = 0;
    const auto count = static_cast<std::uint32_t>(size);
    return WriteFile(file, bytes, count, written) && written == count;
}

bool WriteWholeToConsole(Handle console, const CUnicodeString& text) {
    std::uint32_t written = 0;
    const auto length = static_cast<std::uint32_t>(text.Length());
    return WriteConsole(console, text.Text(), length, written) && written == length;
}

bool WriteNarrow(Handle file, const CUnicodeString& text) {
    const CString bytes = text.ToNarrow(AnsiCodePage);
    return WriteWhole(file, bytes.Text(), bytes.Length());
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
    if (!WriteLine(line)) {
        WriteNarrow(GetStdHandle(StdErrorHandle), line); // lost if that fails as well
    }
    return GetDefaultButton(style);
}

bool CConsoleMessageHandler::WriteLine(const CUnicodeString& line) const {
    if (fileType == FileTypeChar) {
        return WriteWholeToConsole(output, line);
    }
    if (asAnsi) {
        return WriteNarrow(output, line);
    }
    return WriteWhole(output, line.Text(), line.Length() * static_cast<std::int32_t>(sizeof(char16_t)));
}

} // namespace Tsx
