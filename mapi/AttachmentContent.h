// A file as it goes into a message: read whole, and kept open against writers until the message has it. For
// CMapiMessage::AddAttachment.
#pragma once

#include "foundation/inc/file.h"
#include "mapi/MapiRecords.h"
#include <memory>

namespace Mapi {

/// All bytes of a file, in memory of the current manager.
struct CFileBytes {
    struct CBlockDeleter {
        void operator()(std::uint8_t* block) const { Tsx::FreeToOwnManager(block); }
    };

    std::uint32_t length = 0;
    std::unique_ptr<std::uint8_t, CBlockDeleter> buffer;

    /// Null and 0 for an empty file.
    SBinary Data() const { return {length, length > 0 ? buffer.get() : nullptr}; }
};

/// Reads a file in one call. The length is asked for once: bytes that the file gains after that stay out, and a file
/// that gives fewer raises the end-of-file failure. 2 GiB or more are an internal error.
CFileBytes ReadWholeFile(Tsx::CBaseFile& file);

class CAttachmentContent {
public:
    /// Raises what opening raises, and what ReadWholeFile raises.
    explicit CAttachmentContent(const Tsx::CUnicodeString& path);

    SBinary Data() const { return bytes.Data(); }

    static void* operator new(std::size_t size);
    static void operator delete(void* block) noexcept { Tsx::FreeToOwnManager(block); }

private:
    Tsx::CFile file;
    CFileBytes bytes; // behind the file: the memory is freed before the file is closed
};

} // namespace Mapi
