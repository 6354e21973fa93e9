#include "platform/inc/console.h"

#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/text.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/handles.h"
#include "platform/linux/nativetext.h"
#include <fcntl.h>
#include <unistd.h>

namespace Platform {

Handle GetStdHandle(std::int32_t which) {
    PLATFORM_FAULT(GetStdHandle, InvalidHandle());
    static FileObject output{STDOUT_FILENO};
    static FileObject error{STDERR_FILENO};
    if (which != StdOutputHandle && which != StdErrorHandle) {
        SetLastError(ErrorInvalidHandle);
        return InvalidHandle();
    }
    FileObject& file = which == StdOutputHandle ? output : error;
    if (fcntl(file.descriptor, F_GETFD) < 0) {
        SetLastError(ErrorInvalidHandle); // a process that was started without the stream has no handle for it
        return nullptr;
    }
    return static_cast<HandleObject*>(&file);
}

bool WriteConsole(Handle console, const char16_t* text, std::uint32_t length, std::uint32_t& written) {
    written = 0;
    PLATFORM_FAULT(WriteConsole, false);
    const FileObject* file = FileOf(console);
    if (!file || isatty(file->descriptor) == 0) {
        return file && Fail(ErrorInvalidHandle);
    }
    const std::string bytes = Utf8Text({text, length});
    std::uint32_t writtenBytes = 0;
    if (!WriteFile(console, bytes.data(), static_cast<std::uint32_t>(bytes.size()), writtenBytes)) {
        return false;
    }
    written = length;
    return true;
}

std::uint32_t GetConsoleOutputCP() {
    return CodePageUtf8;
}

} // namespace Platform
