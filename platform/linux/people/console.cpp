#include "platform/inc/console.h"

#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/text.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/files/handles.h"
#include "platform/linux/text/nativetext.h"
#include <atomic>
#include <fcntl.h>
#include <unistd.h>

namespace Platform {

namespace {

// One of the two standard handles: that of the process's own stream until another one is set.
struct StandardHandle {
    StandardHandle(std::int32_t number, int descriptor) : which(number), stream(new FileObject) {
        stream->descriptor = Descriptor(descriptor);
    }

    std::int32_t which;
    FileObject* stream; // never deleted, for the stream is the process's and stays open
    std::atomic<Handle> replacement{nullptr};
    std::atomic<bool> replaced{false};
};

// Null with the last error set for any other number.
StandardHandle* FindStandardHandle(std::int32_t which) {
    static StandardHandle handles[] = {{StdOutputHandle, STDOUT_FILENO}, {StdErrorHandle, STDERR_FILENO}};
    for (StandardHandle& handle : handles) {
        if (handle.which == which) {
            return &handle;
        }
    }
    return Fail(ErrorInvalidHandle, nullptr);
}

} // namespace

Handle GetStdHandle(std::int32_t which) {
    PLATFORM_FAULT(GetStdHandle, InvalidHandle());
    StandardHandle* handle = FindStandardHandle(which);
    if (!handle) {
        return InvalidHandle();
    }
    if (handle->replaced) {
        return handle->replacement;
    }
    if (fcntl(handle->stream->descriptor.Get(), F_GETFD) < 0) {
        SetLastError(ErrorInvalidHandle); // a process that was started without the stream has no handle for it
        return nullptr;
    }
    return static_cast<HandleObject*>(handle->stream);
}

bool SetStdHandle(std::int32_t which, Handle handle) {
    PLATFORM_FAULT(SetStdHandle, false);
    StandardHandle* standard = FindStandardHandle(which);
    if (standard) {
        standard->replacement = handle;
        standard->replaced = true;
    }
    return standard != nullptr;
}

bool WriteConsole(Handle console, const char16_t* text, std::uint32_t length, std::uint32_t& written) {
    written = 0;
    PLATFORM_FAULT(WriteConsole, false);
    const FileObject* file = FileOf(console);
    if (!file) {
        return false;
    }
    if (isatty(file->descriptor.Get()) == 0) {
        return Fail(ErrorInvalidHandle);
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
