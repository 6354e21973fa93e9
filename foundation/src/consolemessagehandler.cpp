#include "foundation/inc/lineends.h"
#include "foundation/inc/messagehandlers.h"
#include "foundation/src/statics.h"
#include "platform/inc/files.h"

namespace Tsx {

namespace {

bool IsMissing(Platform::Handle handle) {
    return !handle || handle == Platform::InvalidHandle();
}

bool WriteWhole(Platform::Handle file, const void* bytes, std::int32_t size) {
    std::uint32_t written = 0;
    const auto count = static_cast<std::uint32_t>(size);
    return Platform::WriteFile(file, bytes, count, written) && written == count;
}

bool WriteNarrow(Platform::Handle file, const CUnicodeString& text) {
    const CString bytes = text.ToNarrow(AnsiCodePage);
    return WriteWhole(file, bytes.Text(), bytes.Length());
}

} // namespace

bool WriteToConsole(Platform::Handle console, const CUnicodeString& text) {
    std::uint32_t written = 0;
    const auto length = static_cast<std::uint32_t>(text.Length());
    return Platform::WriteConsole(console, text.Text(), length, written) && written == length;
}

CConsoleMessageHandler::CConsoleMessageHandler(Platform::Handle standardOutput)
    : output(standardOutput),
      fileType(IsMissing(output) ? 0 : Platform::GetFileType(output) & ~Platform::FileTypeRemote) {}

bool CConsoleMessageHandler::BeginsWithMark() const {
    std::int64_t kept = 0;
    if (!Platform::SetFilePointerEx(output, 0, kept, Platform::FileCurrent) || kept == 0) {
        return false;
    }
    std::int64_t moved = 0;
    unsigned char start[2] = {};
    std::uint32_t read = 0;
    const bool found = Platform::SetFilePointerEx(output, 0, moved, Platform::FileBegin) &&
                       Platform::ReadFile(output, start, sizeof(start), read) && read == sizeof(start) &&
                       start[0] == 0xFF && start[1] == 0xFE;
    Platform::SetFilePointerEx(output, kept, moved, Platform::FileBegin);
    return found;
}

void CConsoleMessageHandler::DecideEncoding() {
    asAnsi = fileType == Platform::FileTypeDisk ? !BeginsWithMark() : fileType != Platform::FileTypeChar;
    asAnsiKnown = true;
}

std::int32_t CConsoleMessageHandler::ShowMessageBox(Platform::Window, const char16_t* text, const char16_t*,
                                                    std::uint32_t style) {
    const CCriticalSectionLock guard(ConsoleHandlerLock);
    if (!asAnsiKnown) {
        DecideEncoding();
    }
    const CUnicodeString line = WithCarriageReturns(text) + u"\r\n";
    if (!WriteLine(line)) {
        WriteNarrow(Platform::GetStdHandle(Platform::StdErrorHandle), line); // lost if that fails as well
    }
    return GetDefaultButton(style);
}

bool CConsoleMessageHandler::WriteLine(const CUnicodeString& line) const {
    if (fileType == Platform::FileTypeChar) {
        return WriteToConsole(output, line);
    }
    if (asAnsi) {
        return WriteNarrow(output, line);
    }
    return WriteWhole(output, line.Text(), line.Length() * static_cast<std::int32_t>(sizeof(char16_t)));
}

} // namespace Tsx
