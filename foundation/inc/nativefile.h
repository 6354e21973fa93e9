// An open file of the system.
#pragma once

#include "foundation/inc/basefile.h"
#include "foundation/inc/memorymanager.h"
#include "platform/inc/types.h"

namespace Tsx {

/// What CNativeFileSystem::OpenFile gives out.
class CNativeFile : public CBaseFile, public CAllocatedOn<RuntimeHeap> {
public:
    CNativeFile() = default;
    /// Closes; a failure is shown.
    ~CNativeFile() override;

    /// With the values of CreateFile.
    void Open(const CUnicodeString& path, std::uint32_t access, std::uint32_t share, void* security,
              std::uint32_t disposition, std::uint32_t attributes, Platform::Handle templateFile);

    CUnicodeString GetFileName() const override;
    std::int32_t Read(void* buffer, std::int32_t count) override;
    /// AS DESIGNED: one call of the system, whose count of bytes written is not looked at: a short write goes
    /// unnoticed.
    void Write(const void* buffer, std::int32_t count) override;
    std::int64_t GetPosition() const override;
    std::int64_t Seek(std::int64_t offset, std::uint32_t from) override;
    /// Cuts or extends, and leaves the position at the new end.
    void SetLength(std::int64_t length) override;
    std::int64_t GetLength() const override;
    void Abort() override;
    void Flush() override;
    void Close() override;

private:
    Platform::Handle Handle = Platform::InvalidHandle(); // that value while closed
    CUnicodeString Name;                                 // the full name; empty while closed

    bool IsOpen() const { return Handle != Platform::InvalidHandle(); }
    void RequireOpen() const;
    bool RequireTransfer(const void* buffer, std::int32_t count) const;
    void Check(bool success) const;
    std::int64_t MovePosition(std::int64_t offset, std::uint32_t from) const;
};

} // namespace Tsx
