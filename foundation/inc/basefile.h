// The interface of every byte stream with a position.
#pragma once

#include "foundation/inc/assertion.h"
#include "foundation/inc/unicodestring.h"
#include <cstdint>
#include <limits>

namespace Tsx {

/// Where Seek counts from.
constexpr std::uint32_t SeekFromStart = 0;
constexpr std::uint32_t SeekFromCurrent = 1;
constexpr std::uint32_t SeekFromEnd = 2;

/// An open file, or one that has been closed. Serves one thread at a time. Operations of the system that fail raise
/// CFileException; wrong calls (a closed file, a negative count) are internal errors.
class CBaseFile {
public:
    CBaseFile() = default;
    virtual ~CBaseFile() = default;
    CBaseFile(const CBaseFile&) = delete;
    CBaseFile& operator=(const CBaseFile&) = delete;

    /// The full name of the open file.
    virtual CUnicodeString GetFileName() const = 0;
    /// The number of bytes read; fewer than `count` only at the end of the file.
    virtual std::int32_t Read(void* buffer, std::int32_t count) = 0;
    /// Writes all of `count` or raises.
    virtual void Write(const void* buffer, std::int32_t count) = 0;
    virtual std::int64_t GetPosition() const = 0;
    /// Moves the position and returns the new one.
    virtual std::int64_t Seek(std::int64_t offset, std::uint32_t from) = 0;
    virtual void SetLength(std::int64_t length) = 0;
    virtual std::int64_t GetLength() const = 0;
    /// Closes and reports no failure.
    virtual void Abort() = 0;
    virtual void Flush() = 0;
    /// Closes and raises any failure; the file is closed all the same.
    virtual void Close() = 0;
    virtual bool IsEndOfFile() const { return GetLength() == GetPosition(); }

    /// The length of a file that 31 bits can count; any other length is an internal error.
    std::int32_t GetLength32() const {
        const std::int64_t length = GetLength();
        TSX_ASSERT_AT(length >= 0 && length <= std::numeric_limits<std::int32_t>::max(), u"inc\\basefile", 56);
        return static_cast<std::int32_t>(length);
    }
};

} // namespace Tsx
