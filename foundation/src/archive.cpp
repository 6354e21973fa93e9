#include "foundation/inc/archive.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/messagenames.h"

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\archive";

} // namespace

CArchive::CArchive(CBaseFile* file, TArchiveDirection direction, std::int32_t bufferSize) : BufferSize(bufferSize) {
    TSX_REQUIRE(bufferSize >= 0, ModuleName);
    Buffer.SetSize(bufferSize);
    Attach(file, direction);
}

CArchive::~CArchive() {
    try {
        if (IsAttached()) {
            Detach(); // the class tables go with the object
        }
    } catch (CException* exception) {
        delete exception;
    }
}

void CArchive::Attach(CBaseFile* file, TArchiveDirection direction) {
    TSX_REQUIRE(!IsAttached() && file, ModuleName);
    Name = file->GetFileName();
    File = file;
    Direction = direction;
    BasePosition = 0;
    FilePosition = 0;
    HighWater = 0;
    BufferPos = 0;
    BufferAvailable = 0;
}

std::int64_t CArchive::GetPosition() const {
    TSX_REQUIRE(IsAttached(), ModuleName, 0);
    return FilePosition - BasePosition + (Direction == AD_Load ? -BufferAvailable : BufferPos);
}

void CArchive::Flush() {
    TSX_REQUIRE(IsAttached(), ModuleName);
    if (Direction == AD_Store) {
        FlushStored();
    } else if (Direction == AD_Load) {
        FlushLoaded();
    }
    BufferPos = 0;
    BufferAvailable = 0;
}

void CArchive::FlushStored() {
    const std::int32_t count = BufferPos + BufferAvailable;
    if (count == 0) {
        return;
    }
    File->Write(Buffer.Data(), count);
    HighWater = std::max(HighWater, FilePosition + count);
    if (BufferAvailable != 0) {
        File->Seek(-std::int64_t{BufferAvailable}, SeekFromCurrent);
    }
    FilePosition += BufferPos;
}

void CArchive::FlushLoaded() {
    if (BufferAvailable > 0) {
        File->Seek(-std::int64_t{BufferAvailable}, SeekFromCurrent);
        FilePosition -= BufferAvailable;
    }
}

void CArchive::Detach() {
    Flush();
    File = nullptr;
    Name.Clear();
    Direction = AD_None;
}

void CArchive::Close() {
    Detach();
    ResetClassTables();
}

void CArchive::WritePastBuffer(const void* buffer, std::int32_t count) {
    TSX_REQUIRE(IsAttached() && Direction == AD_Store && count >= 0, ModuleName);
    if (count == 0) {
        return;
    }
    const char* bytes = static_cast<const char*>(buffer);
    std::int32_t left = count;
    if (BufferPos > 0) {
        // Whole buffers reach the file, so that its writes stay aligned.
        const std::int32_t room = BufferSize - BufferPos;
        std::memcpy(Buffer.Data() + BufferPos, bytes, static_cast<std::size_t>(room));
        BufferAvailable = 0;
        BufferPos = BufferSize;
        Flush();
        bytes += room;
        left -= room;
    }
    if (left < BufferSize) {
        std::memcpy(Buffer.Data(), bytes, static_cast<std::size_t>(left));
        BufferPos = left;
    } else {
        File->Write(bytes, left);
        FilePosition += left;
    }
    BufferAvailable = 0;
    HighWater = std::max(HighWater, FilePosition);
}

void CArchive::ReadPastBuffer(void* buffer, std::int32_t count) {
    TSX_REQUIRE(IsAttached() && Direction == AD_Load && count >= 0, ModuleName);
    if (count == 0) {
        return;
    }
    const std::int32_t buffered = BufferAvailable;
    std::memcpy(buffer, Buffer.Data() + BufferPos, static_cast<std::size_t>(buffered));
    BufferAvailable = 0;
    BufferPos = 0;
    char* rest = static_cast<char*>(buffer) + buffered;
    const std::int32_t left = count - buffered;
    if (left < BufferSize) {
        BufferAvailable = File->Read(Buffer.Data(), BufferSize);
        if (BufferAvailable < left) {
            GenerateFileCauseException(FC_EndOfFile, Name);
        }
        FilePosition += BufferAvailable;
        TakeBuffered(rest, left);
    } else {
        if (File->Read(rest, left) != left) {
            GenerateFileCauseException(FC_EndOfFile, Name);
        }
        FilePosition += left;
    }
}

void CArchive::ReadString(CString& string) {
    const std::int32_t count = ReadCount();
    if (count < 0) {
        FailAsCorrupt();
        return;
    }
    // In pieces that double: a length that the file cannot fulfil takes no more memory than the file has bytes.
    constexpr std::int32_t firstPiece = 1 << 20;
    CString read;
    for (std::int32_t have = 0; have < count;) {
        const std::int32_t piece = std::min(count - have, std::max(have, firstPiece));
        Read(read.GetBuffer(have + piece) + have, piece);
        have += piece;
        read.SetLength(have);
    }
    string = std::move(read);
}

void CArchive::WriteString(const CString& string) {
    WriteCount(string.Length());
    Write(string.Text(), string.Length());
}

CUnicodeString CArchive::FailAsCorrupt() const {
    GenerateCheckException(ERR_BAD_ARCHIVE, Name.Text(), u"");
    return {};
}

} // namespace Tsx
