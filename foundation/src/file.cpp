#include "foundation/inc/file.h"

#include "foundation/inc/assertion.h"
#include "foundation/inc/failureguard.h"
#include "foundation/inc/filesystem.h"
#include "platform/inc/files.h"
#include <utility>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\file";

/// The system refuses to empty a hidden or system file unless the call repeats these bits.
std::uint32_t KeptAttributes(const CUnicodeString& path) {
    CFileSystemBase& system = FileSystem::GetFileSystem(path);
    if (!system.CheckFile(path, FA_Exists)) {
        return 0;
    }
    const std::uint32_t attributes = system.GetAttributes(path);
    return attributes == Platform::InvalidFileAttributes
               ? 0
               : attributes & (Platform::FileAttributeHidden | Platform::FileAttributeSystem);
}

} // namespace

CFile::~CFile() {
    GuardDestructor([this] { CloseInOwner(false); });
}

void CFile::Open(const CUnicodeString& path, std::uint32_t mode, std::uint32_t attributes, std::int64_t reserve) {
    TSX_REQUIRE(!IsOpen(), ModuleName);
    CUnicodeString full = path;
    FileSystem::GetFullName(full);
    const std::uint32_t access = GetDesiredAccess(mode);
    const std::uint32_t share = GetShareMode(mode);
    const std::uint32_t disposition = GetDisposition(mode);
    if (disposition == Platform::CreateAlways && (attributes & Platform::FileAttributeNormal)) {
        attributes |= KeptAttributes(full);
    }
    OpenEx(full, access, share, nullptr, disposition, attributes, nullptr, reserve);
}

void CFile::OpenEx(const CUnicodeString& path, std::uint32_t access, std::uint32_t share, void* security,
                   std::uint32_t creation, std::uint32_t attributes, Platform::Handle templateFile,
                   std::int64_t reserve) {
    TSX_REQUIRE(!IsOpen(), ModuleName);
    CUnicodeString full = path;
    FileSystem::GetFullName(full);
    Owner = &FileSystem::GetFileSystem(full);
    try {
        File = Owner->OpenFile(full, access, share, security, creation, attributes, templateFile, reserve, this);
    } catch (...) {
        Owner = nullptr;
        throw;
    }
}

CUnicodeString CFile::GetFileName() const {
    return RequireOpen() ? File->GetFileName() : CUnicodeString();
}

std::int32_t CFile::Read(void* buffer, std::int32_t count) {
    return count != 0 && RequireTransfer(buffer, count) ? File->Read(buffer, count) : 0;
}

void CFile::Write(const void* buffer, std::int32_t count) {
    if (count != 0 && RequireTransfer(buffer, count)) {
        File->Write(buffer, count);
    }
}

std::int64_t CFile::GetPosition() const {
    return RequireOpen() ? File->GetPosition() : 0;
}

std::int64_t CFile::Seek(std::int64_t offset, std::uint32_t from) {
    return RequireOpen() ? File->Seek(offset, from) : 0;
}

void CFile::SetLength(std::int64_t length) {
    TSX_ASSERT(length >= 0, ModuleName);
    if (RequireOpen()) {
        File->SetLength(length);
    }
}

std::int64_t CFile::GetLength() const {
    return RequireOpen() ? File->GetLength() : 0;
}

void CFile::Abort() {
    CloseInOwner(true);
}

void CFile::Flush() {
    if (RequireOpen()) {
        File->Flush();
    }
}

void CFile::Close() {
    CloseInOwner(false);
}

bool CFile::IsEndOfFile() const {
    return !RequireOpen() || File->IsEndOfFile();
}

std::uint32_t CFile::GetDesiredAccess(std::uint32_t mode) {
    constexpr std::uint32_t ofAccess[] = {Platform::GenericRead, Platform::GenericWrite,
                                          Platform::GenericRead | Platform::GenericWrite, 0};
    const std::uint32_t access = ofAccess[mode & OM_AccessMask];
    TSX_ASSERT(access != 0, ModuleName);
    return access;
}

std::uint32_t CFile::GetShareMode(std::uint32_t mode) {
    switch (mode & OM_ShareMask) {
    case OM_ShareExclusive:
        return 0;
    case OM_ShareDenyWrite:
        return Platform::FileShareRead;
    case OM_ShareDenyRead:
        return Platform::FileShareWrite;
    case OM_ShareDenyNone:
        return Platform::FileShareRead | Platform::FileShareWrite;
    default:
        FailAssertion(ModuleName, __LINE__);
        return 0;
    }
}

std::uint32_t CFile::GetDisposition(std::uint32_t mode) {
    if (mode & OM_Create) {
        return mode & OM_NoTruncate ? Platform::OpenAlways : Platform::CreateAlways;
    }
    return mode & OM_CreateNew ? Platform::CreateNew : Platform::OpenExisting;
}

bool CFile::RequireOpen() const {
    TSX_REQUIRE(IsOpen(), ModuleName, false);
    return true;
}

bool CFile::RequireTransfer(const void* buffer, std::int32_t count) const {
    TSX_REQUIRE(buffer && count > 0, ModuleName, false);
    return RequireOpen();
}

void CFile::CloseInOwner(bool abort) {
    if (!IsOpen()) {
        return;
    }
    // Closed from here on, also if the file system raises.
    CBaseFile* file = std::exchange(File, nullptr);
    std::exchange(Owner, nullptr)->CloseFile(file, abort);
}

} // namespace Tsx
