#include "foundation/inc/virtualfilesystem.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/filesystem.h"
#include "foundation/src/statics.h"
#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\virtualfilesystem";

/// Routing has chosen this file system by the path, so any other path is a wrong call.
void RequireVirtual(const CUnicodeString& path) {
    TSX_ASSERT(FileSystem::IsVirtualPath(path), ModuleName);
}

[[noreturn]] void RaiseNotFound(const CUnicodeString& path) {
    RequireVirtual(path);
    GenerateFileException(Platform::ErrorFileNotFound, path);
}

[[noreturn]] void RaiseDenied(const CUnicodeString& path) {
    RequireVirtual(path);
    GenerateFileException(Platform::ErrorAccessDenied, path);
}

/// Either name can be the virtual one.
[[noreturn]] void RaiseNoCopy(const CUnicodeString& target, const CUnicodeString& source) {
    if (FileSystem::IsVirtualPath(source)) {
        RaiseNotFound(source);
    }
    RaiseDenied(target);
}

} // namespace

CVirtualFileSystem::CVirtualFileSystem() {
    TSX_ASSERT(!VirtualFileSystem, ModuleName);
    VirtualFileSystem = this;
}

CVirtualFileSystem::~CVirtualFileSystem() {
    VirtualFileSystem = nullptr;
}

CUnicodeString CVirtualFileSystem::GetRootName() {
    return VirtualRootName;
}

void CVirtualFileSystem::ReleaseAll() {}

CBaseFile* CVirtualFileSystem::OpenFile(const CUnicodeString& path, std::uint32_t, std::uint32_t, void*,
                                        std::uint32_t disposition, std::uint32_t, Platform::Handle, std::int64_t,
                                        CFile*) {
    if (disposition == Platform::OpenExisting) {
        RaiseNotFound(path);
    }
    RaiseDenied(path);
}

void CVirtualFileSystem::CloseFile(CBaseFile*, bool) {
    FailAssertion(ModuleName, __LINE__); // no file of this system was ever opened
}

bool CVirtualFileSystem::DirectoryExists(const CUnicodeString& path) {
    RequireVirtual(path);
    return false;
}

bool CVirtualFileSystem::CheckFile(const CUnicodeString& path, std::uint32_t) {
    RequireVirtual(path);
    return false;
}

void CVirtualFileSystem::SetAttributes(const CUnicodeString& path, std::uint32_t) {
    RaiseNotFound(path);
}

std::uint32_t CVirtualFileSystem::GetAttributes(const CUnicodeString& path) {
    RaiseNotFound(path);
}

void CVirtualFileSystem::DeleteFile(const CUnicodeString& path) {
    RaiseNotFound(path);
}

bool CVirtualFileSystem::TryDeleteFile(const CUnicodeString& path) {
    RequireVirtual(path);
    return false;
}

void CVirtualFileSystem::CopyFile(const CUnicodeString& target, const CUnicodeString& source) {
    RaiseNoCopy(target, source);
}

void CVirtualFileSystem::MoveFile(const CUnicodeString& target, const CUnicodeString& source) {
    RaiseNoCopy(target, source);
}

void CVirtualFileSystem::MoveFileOnVolume(const CUnicodeString& target, const CUnicodeString& source) {
    RaiseNoCopy(target, source);
}

void CVirtualFileSystem::RenameFile(const CUnicodeString& source, const CUnicodeString& target) {
    RaiseNoCopy(target, source);
}

std::int32_t CVirtualFileSystem::GetFreeSpace(const CUnicodeString& path) {
    RequireVirtual(path);
    return 0;
}

void CVirtualFileSystem::CreateDirectory(const CUnicodeString& path, bool) {
    RaiseDenied(path);
}

void CVirtualFileSystem::RemoveDirectory(const CUnicodeString& path) {
    RequireVirtual(path);
}

void CVirtualFileSystem::FindFiles(const CUnicodeString& directory, CArray<CFileStatus>&, const CUnicodeString&) {
    RequireVirtual(directory);
}

void CVirtualFileSystem::GetStatus(const CUnicodeString& path, CFileStatus&) {
    RaiseNotFound(path);
}

void CVirtualFileSystem::SetStatus(const CUnicodeString& path, const CFileStatus&) {
    RaiseNotFound(path);
}

} // namespace Tsx
