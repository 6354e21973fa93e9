// The file that callers put on their stack: it opens a path in the file system that the path belongs to.
#pragma once

#include "foundation/inc/basefile.h"
#include "foundation/inc/openmode.h"
#include "platform/inc/fileattributes.h"
#include "platform/inc/types.h"

namespace Tsx {

class CFileSystemBase;

/// Closed, or open until Close, Abort or the destructor; it can be opened again. Serves one thread at a time. A failed
/// open leaves it closed. Every operation but closing, and a transfer of 0 bytes, wants an open file: else it is an
/// internal error.
class CFile : public CBaseFile {
public:
    CFile() = default;
    /// Closes; a failure is shown.
    ~CFile() override;

    /// Opens with a sum of open-mode constants; see openmode.h. `attributes` are those that a new file gets, and
    /// `reserve` the bytes that it is expected to hold. A hidden or system file that is created anew stays one.
    void Open(const CUnicodeString& path, std::uint32_t mode, std::uint32_t attributes = Platform::FileAttributeNormal,
              std::int64_t reserve = 0);
    /// The same with the values of CreateFile. The template is the caller's after a failure, and otherwise as
    /// CFileSystemBase::OpenFile says.
    void OpenEx(const CUnicodeString& path, std::uint32_t access, std::uint32_t share, void* security,
                std::uint32_t creation, std::uint32_t attributes, Platform::Handle templateFile, std::int64_t reserve);

    bool IsOpen() const { return File != nullptr; }
    /// What the file system gave out; null while closed.
    CBaseFile* GetOpenFile() const { return File; }

    CUnicodeString GetFileName() const override;
    std::int32_t Read(void* buffer, std::int32_t count) override;
    void Write(const void* buffer, std::int32_t count) override;
    std::int64_t GetPosition() const override;
    std::int64_t Seek(std::int64_t offset, std::uint32_t from) override;
    void SetLength(std::int64_t length) override;
    std::int64_t GetLength() const override;
    void Abort() override;
    void Flush() override;
    void Close() override;
    bool IsEndOfFile() const override;

    /// The values of CreateFile for an open mode. An access or a share mode that is none of the constants is an
    /// internal error.
    static std::uint32_t GetDesiredAccess(std::uint32_t mode);
    static std::uint32_t GetShareMode(std::uint32_t mode);
    static std::uint32_t GetDisposition(std::uint32_t mode);

private:
    CBaseFile* File = nullptr;        // made by Owner, which takes it back
    CFileSystemBase* Owner = nullptr; // not owned; both are null while closed

    bool RequireOpen() const;
    bool RequireTransfer(const void* buffer, std::int32_t count) const;
    void CloseInOwner(bool abort);
};

} // namespace Tsx
