// The opening of files: CreateFile, and the two files of a copy.
#pragma once

#include "platform/linux/files/handles.h"
#include "platform/linux/files/paths.h"
#include <cstdint>
#include <memory>
#include <string_view>

namespace Platform {

struct OpenRequest {
    std::uint32_t access = 0;       // Generic bits
    std::uint32_t share = 0;        // FileShare bits
    std::uint32_t disposition = 0;  // CreateNew to TruncateExisting
    std::uint32_t attributes = 0;   // attributes and FileFlag bits
    unsigned permissions = 0666;    // of a file that is made
    const FileKey* other = nullptr; // a file that this must not be: ERROR_SHARING_VIOLATION
    bool needsLength = false;       // what has none, such as a pipe, is read to its end when it is opened:
                                    // ERROR_FILE_TOO_LARGE if it has more than LargestWithoutLength
};

/// Opens or makes a file as CreateFile does, last error included; null on failure. `location` is where it was found.
std::unique_ptr<FileObject> OpenFileObject(std::u16string_view path, const OpenRequest& request, Location& location);

} // namespace Platform
