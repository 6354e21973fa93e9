#include "foundation/inc/nativefile.h"

#include "foundation/inc/failureguard.h"
#include "foundation/inc/filesystem.h"
#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include <utility>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\nativefile";

std::int64_t FromWords(std::uint32_t high, std::uint32_t low) {
    return static_cast<std::int64_t>(std::uint64_t{high} << 32 | low);
}

} // namespace

CNativeFile::~CNativeFile() {
    GuardDestructor([this] { CNativeFile::Close(); });
}

void CNativeFile::Open(const CUnicodeString& path, std::uint32_t access, std::uint32_t share, void* security,
                       std::uint32_t disposition, std::uint32_t attributes, Platform::Handle templateFile) {
    TSX_ASSERT(!IsOpen(), ModuleName);
    Name = path;
    FileSystem::GetFullName(Name);
    Handle = Platform::CreateFile(Name.Text(), access, share, security, disposition, attributes, templateFile);
    Check(IsOpen());
}

CUnicodeString CNativeFile::GetFileName() const {
    RequireOpen();
    return Name;
}

std::int32_t CNativeFile::Read(void* buffer, std::int32_t count) {
    if (count == 0 || !RequireTransfer(buffer, count)) {
        return 0;
    }
    std::uint32_t read = 0;
    Check(Platform::ReadFile(Handle, buffer, static_cast<std::uint32_t>(count), read));
    return static_cast<std::int32_t>(read);
}

void CNativeFile::Write(const void* buffer, std::int32_t count) {
    if (count == 0 || !RequireTransfer(buffer, count)) {
        return;
    }
    std::uint32_t written = 0;
    Check(Platform::WriteFile(Handle, buffer, static_cast<std::uint32_t>(count), written));
}

std::int64_t CNativeFile::GetPosition() const {
    return MovePosition(0, SeekFromCurrent);
}

std::int64_t CNativeFile::Seek(std::int64_t offset, std::uint32_t from) {
    return MovePosition(offset, from);
}

void CNativeFile::SetLength(std::int64_t length) {
    RequireOpen();
    TSX_ASSERT(length >= 0, ModuleName);
    Seek(length, SeekFromStart);
    Check(Platform::SetEndOfFile(Handle));
}

std::int64_t CNativeFile::GetLength() const {
    RequireOpen();
    std::uint32_t high = 0;
    const std::uint32_t low = Platform::GetFileSize(Handle, &high);
    Check(low != Platform::InvalidFileSize || Platform::GetLastError() == Platform::ErrorSuccess);
    return FromWords(high, low);
}

void CNativeFile::Abort() {
    if (IsOpen()) {
        Platform::CloseHandle(std::exchange(Handle, Platform::InvalidHandle()));
        Name.Clear();
    }
}

void CNativeFile::Flush() {
    RequireOpen();
    Check(Platform::FlushFileBuffers(Handle));
}

void CNativeFile::Close() {
    if (IsOpen()) {
        Check(Platform::CloseHandle(std::exchange(Handle, Platform::InvalidHandle())));
        Name.Clear();
    }
}

void CNativeFile::RequireOpen() const {
    TSX_ASSERT(IsOpen(), ModuleName);
}

bool CNativeFile::RequireTransfer(const void* buffer, std::int32_t count) const {
    TSX_ASSERT(buffer, ModuleName);
    TSX_ASSERT(count >= 0, ModuleName);
    RequireOpen();
    return buffer && count >= 0 && IsOpen();
}

void CNativeFile::Check(bool success) const {
    if (!success) {
        GenerateFileException(Platform::GetLastError(), Name);
    }
}

std::int64_t CNativeFile::MovePosition(std::int64_t offset, std::uint32_t from) const {
    RequireOpen();
    auto high = static_cast<std::int32_t>(offset >> 32);
    const auto low = Platform::SetFilePointer(Handle, static_cast<std::int32_t>(offset), &high, from);
    Check(low != Platform::InvalidSetFilePointer || Platform::GetLastError() == Platform::ErrorSuccess);
    return FromWords(static_cast<std::uint32_t>(high), low);
}

} // namespace Tsx
