// What a handle points to on this system. A handle is made by CreateFile or GetStdHandle and taken apart by
// CloseHandle.
#pragma once

#include "platform/inc/types.h"

namespace Platform {

struct FileObject {
    int descriptor = -1;
};

/// The file behind a handle; null with the last error set when the handle is null or invalid.
FileObject* FileOf(Handle handle);

} // namespace Platform
