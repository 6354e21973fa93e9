// A file as it goes into a message: read whole, and kept open against writers until the message has it.
#pragma once

#include "foundation/inc/file.h"
#include "mapi/MapiRecords.h"
#include <memory>

namespace Mapi {

class CAttachmentContent {
public:
    /// Raises what opening raises, an internal error for a file of 2 GiB or more, and the end-of-file failure for one
    /// that gives fewer bytes than it has.
    explicit CAttachmentContent(const Tsx::CUnicodeString& path);
    /// The same of a file that the caller has open. The length is asked once: what a file has gained by the time that
    /// it is read stays out, and what it has lost is the failure.
    explicit CAttachmentContent(Tsx::CBaseFile& openFile) { ReadWhole(openFile); }
    /// Frees the memory, then closes the file.
    ~CAttachmentContent() = default;
    CAttachmentContent(const CAttachmentContent&) = delete;
    CAttachmentContent& operator=(const CAttachmentContent&) = delete;

    /// Null and 0 for an empty file.
    SBinary Data() const { return {length, length > 0 ? buffer.get() : nullptr}; }

    static void* operator new(std::size_t size);
    static void operator delete(void* block) noexcept { Tsx::FreeToOwnManager(block); }

private:
    struct CBlockDeleter {
        void operator()(std::uint8_t* block) const { Tsx::FreeToOwnManager(block); }
    };

    Tsx::CFile file;
    std::uint32_t length = 0;
    std::unique_ptr<std::uint8_t, CBlockDeleter> buffer;

    void ReadWhole(Tsx::CBaseFile& source);
};

} // namespace Mapi
