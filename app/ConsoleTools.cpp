#include "app/ConsoleTools.h"

#include "foundation/inc/criticalsection.h"
#include "foundation/inc/errors.h"
#include "foundation/inc/lineends.h"
#include "foundation/inc/messagehandlers.h"
#include "platform/inc/console.h"
#include "platform/inc/files.h"
#include <algorithm>

using namespace Tsx;

namespace Console {

namespace {

constexpr const char16_t* ModuleName = u"..\\Src\\ConsoleTools";
constexpr std::int32_t LargestWrite = 4096; // bytes in one call

// What has been decided for the present output handle. Under Lock.
struct COutputState {
    CCriticalSection Lock;
    Platform::Handle OutputHandle = Platform::InvalidHandle();
    std::uint32_t OutputType = 0; // without the remote bit
    bool ByteMode = false;
};

COutputState& State() {
    static COutputState state;
    return state;
}

void DecideMode(COutputState& state, Platform::Handle handle) {
    state.ByteMode = false;
    state.OutputHandle = handle;
    if (!handle || handle == Platform::InvalidHandle()) {
        GenerateExceptionFromLastError();
    }
    state.OutputType = Platform::GetFileType(handle) & ~Platform::FileTypeRemote;
    if (state.OutputType == Platform::FileTypeDisk) {
        std::int64_t position = 0;
        if (!Platform::SetFilePointerEx(handle, 0, position, Platform::FileCurrent)) {
            GenerateExceptionFromLastError();
        }
        if (position != 0) {
            state.ByteMode = true;
        } else {
            constexpr unsigned char mark[] = {0xFF, 0xFE};
            WriteBytes(handle, mark, sizeof(mark));
        }
    } else if (state.OutputType != Platform::FileTypeChar) {
        state.ByteMode = true;
    }
}

} // namespace

void ConsoleWrite(const CUnicodeString& text) {
    COutputState& state = State();
    const CCriticalSectionLock guard(state.Lock);
    const Platform::Handle handle = Platform::GetStdHandle(Platform::StdOutputHandle);
    if (handle != state.OutputHandle) {
        DecideMode(state, handle);
    }
    if (!state.ByteMode && state.OutputType == Platform::FileTypeChar) {
        if (WriteToConsole(handle, text)) {
            return;
        }
    } else if (!state.ByteMode) {
        WriteBytes(handle, text.Text(), text.Length() * static_cast<std::int32_t>(sizeof(char16_t)));
        return;
    }
    // A pipe, a file with content, or a character device that is no console, such as the null device.
    const CString bytes = text.ToNarrow(Platform::GetConsoleOutputCP());
    WriteBytes(handle, bytes.Text(), bytes.Length());
    state.ByteMode = true;
}

void WriteBytes(Platform::Handle handle, const void* bytes, std::int32_t length) {
    TSX_ASSERT(handle && handle != Platform::InvalidHandle(), ModuleName);
    TSX_ASSERT(bytes && length >= 0, ModuleName);
    const auto* rest = static_cast<const char*>(bytes);
    while (length > 0) {
        const std::int32_t piece = std::min(length, LargestWrite);
        std::uint32_t written = 0;
        if (!Platform::WriteFile(handle, rest, static_cast<std::uint32_t>(piece), written)) {
            GenerateExceptionFromLastError();
        }
        TSX_ASSERT(written == static_cast<std::uint32_t>(piece), ModuleName);
        rest += piece;
        length -= piece;
    }
}

void ConsoleWriteLines(const CUnicodeString& text) {
    ConsoleWrite(WithCarriageReturns(text));
}

} // namespace Console
