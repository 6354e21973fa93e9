// The buffered binary stream over a file: bytes in one direction, and on top of them counts, strings, class references
// and whole objects.
#pragma once

#include "foundation/inc/array.h"
#include "foundation/inc/basefile.h"
#include "foundation/inc/hashtable.h"
#include "foundation/inc/map.h"
#include "foundation/inc/object.h"
#include "foundation/inc/roomybuffer.h"
#include <algorithm>
#include <bit>
#include <cstring>

namespace Tsx {

enum TArchiveDirection : std::int32_t { AD_None = 0, AD_Load = 1, AD_Store = 2 };

/// For one thread. The file stays its owner's, open, and is not to be moved by anybody else while it is attached.
///
///   form                            bytes, all numbers little-endian
///   count of 0 to 254               one byte
///   any other count                 FF and 32 bits
///   string                          count of its length, its bytes
///   class, named for the 1st time   count 2i + 1 with i the names so far, the name as a string
///   class, named before             count 2i with i the names before it
///   object                          its class, then what its Serialize writes
///   no object                       the class with the empty name
///
/// Wrong calls (not attached, wrong direction, negative count) are internal errors. Data that end too early raise
/// CFileException with the cause 14, contradictory ones ERR_BAD_ARCHIVE, both with the file's name.
class CArchive {
public:
    static constexpr std::int32_t StandardBufferSize = 4096;

    /// Attaches at once.
    CArchive(CBaseFile* file, TArchiveDirection direction, std::int32_t bufferSize = StandardBufferSize);
    /// Closes. AS DESIGNED: a failure of that goes unnoticed; Close raises it.
    virtual ~CArchive();
    CArchive(const CArchive&) = delete;
    CArchive& operator=(const CArchive&) = delete;

    /// An object, or empty where none was written. Raises ERR_BAD_ARCHIVE_VERSION for a class that is not known here.
    virtual CHolder<IObject> ReadObject();
    /// Writes an object of a registered class, or that there is none.
    virtual void WriteObject(IObject* object);
    /// Forgets which classes were named.
    virtual void ResetClassTables();

    /// Positions count from 0 on, wherever the file stands.
    void Attach(CBaseFile* file, TArchiveDirection direction);
    /// Brings the file to where this stream is: writes what is buffered, or gives back what was read ahead.
    void Flush();
    /// Flushes and detaches; after a failure it is still attached.
    void Close();
    bool IsAttached() const { return File != nullptr; }
    std::int64_t GetPosition() const;

    void Read(void* buffer, std::int32_t count) {
        if (__builtin_expect(count > 0 && Direction == AD_Load && count <= BufferAvailable, 1)) {
            TakeBuffered(buffer, count);
        } else {
            ReadPastBuffer(buffer, count);
        }
    }
    void Write(const void* buffer, std::int32_t count) {
        if (__builtin_expect(count > 0 && Direction == AD_Store && count < BufferSize - BufferPos, 1)) {
            PutBuffered(buffer, count);
        } else {
            WritePastBuffer(buffer, count);
        }
    }

    /// A count of five bytes may come out negative.
    std::int32_t ReadCount() {
        std::uint8_t first = 0;
        Read(&first, 1);
        std::int32_t value = first;
        if (first == LongCount) {
            Read(&value, sizeof value);
        }
        return value;
    }
    void WriteCount(std::int32_t value) {
        static_assert(std::endian::native == std::endian::little, "numbers are written as they lie in memory");
        std::uint8_t bytes[1 + sizeof value] = {LongCount};
        if (value >= 0 && value < LongCount) {
            bytes[0] = static_cast<std::uint8_t>(value);
            Write(bytes, 1);
        } else {
            std::memcpy(bytes + 1, &value, sizeof value);
            Write(bytes, sizeof bytes);
        }
    }

    /// Raises ERR_BAD_ARCHIVE for a negative length.
    void ReadString(CString& string);
    void WriteString(const CString& string);

    /// The class that a count read before refers to. Raises ERR_BAD_ARCHIVE for one that it cannot refer to.
    CUnicodeString ReadClassName(std::int32_t marker);
    /// A name is of ASCII characters; any other is an internal error where it is named for the first time.
    void WriteClassName(const CUnicodeString& name);

private:
    static constexpr std::uint8_t LongCount = 0xFF;

    CBaseFile* File = nullptr; // null while not attached
    CUnicodeString Name;
    std::int32_t Direction = AD_None;
    CRoomyArray<char, StandardBufferSize> Buffer;
    std::int32_t BufferSize;
    std::int64_t BasePosition = 0; // the position that counts as 0
    std::int64_t FilePosition = 0; // store: of the buffer's first byte; load: of its end
    std::int64_t HighWater = 0;    // the largest end of what was stored
    std::int32_t BufferPos = 0;
    std::int32_t BufferAvailable = 0;                                   // bytes behind BufferPos; none in plain storing
    CMap<CUnicodeString, std::int32_t, CStringKeyTraits> StoredClasses; // each name with its 2i
    CArray<CUnicodeString> LoadedClasses;
    /// AS DESIGNED: always empty, and reset with the other two.
    CHashTable<const void*> SpareTable;

    void TakeBuffered(void* buffer, std::int32_t count) {
        std::memcpy(buffer, Buffer.Data() + BufferPos, static_cast<std::size_t>(count));
        BufferPos += count;
        BufferAvailable -= count;
    }
    void PutBuffered(const void* buffer, std::int32_t count) {
        std::memcpy(Buffer.Data() + BufferPos, buffer, static_cast<std::size_t>(count));
        BufferPos += count;
        BufferAvailable = std::max(BufferAvailable - count, 0);
    }

    [[gnu::noinline]] void ReadPastBuffer(void* buffer, std::int32_t count);
    [[gnu::noinline]] void WritePastBuffer(const void* buffer, std::int32_t count);
    void Detach();
    void FlushStored();
    void FlushLoaded();
    CUnicodeString FailAsCorrupt() const;
};

/// A string in the form of WriteString.
inline CArchive& operator<<(CArchive& archive, const CString& string) {
    archive.WriteString(string);
    return archive;
}
inline CArchive& operator>>(CArchive& archive, CString& string) {
    archive.ReadString(string);
    return archive;
}

} // namespace Tsx
