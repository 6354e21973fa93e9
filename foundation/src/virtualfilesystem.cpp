// The operations on single names. Copies, and what happens to handles, are in sources of their own.
#include "foundation/inc/virtualfilesystem.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/failureguard.h"
#include "foundation/inc/file.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/makeobject.h"
#include "foundation/src/statics.h"
#include "platform/inc/fileattributes.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/mappings.h"
#include <algorithm>
#include <limits>
#include <string_view>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\virtualfilesystem";

/// One file name, or one extension.
bool MatchPart(std::u16string_view text, std::u16string_view pattern) {
    if (pattern.empty()) {
        return text.empty();
    }
    if (text.empty() || text.size() < pattern.size()) {
        return false;
    }
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] == u'*') {
            return true;
        }
        if (pattern[i] != u'?' && pattern[i] != text[i]) {
            return false;
        }
    }
    return text.size() == pattern.size();
}

void AppendStatus(const CVirtualFileBase& object, CArray<CFileStatus>& results) {
    CFileStatus status;
    object.FillStatus(status);
    results.Append(std::move(status));
}

} // namespace

CVirtualFileSystem::CVirtualFileSystem() {
    auto root = MakeObject<CVirtualDirectory>(VirtualRootName);
    TSX_ASSERT(!VirtualFileSystem, ModuleName);
    Root = root.release();
    if (!VirtualFileSystem) {
        VirtualFileSystem = this;
    }
}

CVirtualFileSystem::~CVirtualFileSystem() {
    GuardDestructor([this] { ReleaseAll(); });
    if (VirtualFileSystem == this) {
        VirtualFileSystem = nullptr;
    }
    delete Root;
    for (const auto& file : OpenFiles) {
        delete file.Value;
    }
    OpenFiles.DeleteAll();
    FileOwners.DeleteAll();
}

CUnicodeString CVirtualFileSystem::GetRootName() {
    return VirtualRootName;
}

bool CVirtualFileSystem::DirectoryExists(const CUnicodeString& path) {
    const CCriticalSectionLock guard(Lock);
    TSX_REQUIRE(FileSystem::IsVirtualPath(path), ModuleName, false);
    return Root->FindDirectory(path) != nullptr;
}

bool CVirtualFileSystem::CheckFile(const CUnicodeString& path, std::uint32_t mode) {
    if (path.IsEmpty()) {
        return false;
    }
    const CCriticalSectionLock guard(Lock);
    TSX_REQUIRE(FileSystem::IsVirtualPath(path), ModuleName, false);
    const CVirtualFileData* data = Root->FindFileData(path);
    if (mode == FA_Exists) {
        return data != nullptr;
    }
    // What an opening would be answered, without one: no handle is left behind, and no length is set by its end.
    CFile::GetShareMode(mode);
    const std::uint32_t access = CFile::GetDesiredAccess(mode);
    return data && MayOpen(*data, access);
}

void CVirtualFileSystem::SetAttributes(const CUnicodeString& path, std::uint32_t attributes) {
    const CCriticalSectionLock guard(Lock);
    TSX_REQUIRE(FileSystem::IsVirtualPath(path), ModuleName);
    const bool normal = attributes == Platform::FileAttributeNormal;
    FindObject(path).Attributes = normal ? attributes : attributes & ~Platform::FileAttributeNormal;
}

std::uint32_t CVirtualFileSystem::GetAttributes(const CUnicodeString& path) {
    const CCriticalSectionLock guard(Lock);
    TSX_REQUIRE(FileSystem::IsVirtualPath(path), ModuleName, Platform::InvalidFileAttributes);
    return FindObject(path).Attributes;
}

void CVirtualFileSystem::DeleteFile(const CUnicodeString& path) {
    const CCriticalSectionLock guard(Lock);
    TSX_REQUIRE(FileSystem::IsVirtualPath(path), ModuleName);
    const CVirtualFileData* data = Root->FindFileData(path);
    if (data && HasHandles(*data)) {
        GenerateFileException(Platform::ErrorSharingViolation, path);
    }
    if (!Root->DeleteFileData(path)) {
        GenerateFileException(Platform::ErrorFileNotFound, path);
    }
}

bool CVirtualFileSystem::TryDeleteFile(const CUnicodeString& path) {
    const CCriticalSectionLock guard(Lock);
    TSX_REQUIRE(FileSystem::IsVirtualPath(path), ModuleName, false);
    const CVirtualFileData* data = Root->FindFileData(path);
    return data && !HasHandles(*data) && Root->DeleteFileData(path);
}

std::int32_t CVirtualFileSystem::GetFreeSpace(const CUnicodeString& path) {
    const CCriticalSectionLock guard(Lock);
    TSX_REQUIRE(FileSystem::IsVirtualPath(path), ModuleName, 0);
    Platform::MemoryStatus status;
    TSX_ASSERT_CALL(Platform::GlobalMemoryStatusEx(status), ModuleName);
    constexpr std::uint64_t most = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(status.availablePageFile >> 10, most));
}

void CVirtualFileSystem::CreateDirectory(const CUnicodeString& path, bool) {
    const CCriticalSectionLock guard(Lock);
    TSX_REQUIRE(FileSystem::IsVirtualPath(path), ModuleName);
    Root->CreateDirectoryPath(path);
}

void CVirtualFileSystem::RemoveDirectory(const CUnicodeString& path) {
    const CCriticalSectionLock guard(Lock);
    TSX_REQUIRE(FileSystem::IsVirtualPath(path), ModuleName);
    const CVirtualDirectory* directory = Root->FindDirectory(path);
    if (directory && directory->HasEntries()) {
        GenerateFileException(Platform::ErrorSharingViolation, path);
    }
    Root->DeleteDirectoryObject(path);
}

void CVirtualFileSystem::FindFiles(const CUnicodeString& directory, CArray<CFileStatus>& results,
                                   const CUnicodeString& pattern) {
    const CCriticalSectionLock guard(Lock);
    TSX_REQUIRE(FileSystem::IsVirtualPath(directory), ModuleName);
    const CVirtualDirectory* found = Root->FindDirectory(directory);
    if (!found) {
        return;
    }
    const bool all = pattern == u"*";
    for (const auto& file : found->Files) {
        if (all || MatchName(file.Value->Name, pattern)) {
            AppendStatus(*file.Value, results);
        }
    }
    for (const CVirtualDirectory& child : found->GetChildren()) {
        if (all || MatchName(child.Name, pattern)) {
            AppendStatus(child, results);
        }
    }
}

void CVirtualFileSystem::GetStatus(const CUnicodeString& path, CFileStatus& status) {
    FindObject(path).FillStatus(status);
}

void CVirtualFileSystem::SetStatus(const CUnicodeString& path, const CFileStatus& status) {
    CVirtualFileBase& object = FindObject(path);
    object.Attributes = status.Attributes;
    object.CreationTime = status.CreationTime;
    object.LastAccessTime = status.LastAccessTime;
    object.LastWriteTime = status.LastWriteTime;
}

bool CVirtualFileSystem::MatchName(const CUnicodeString& path, const CUnicodeString& pattern) {
    return pattern == u"*.*" || (MatchPart(FileSystem::GetName(path).View(), FileSystem::GetName(pattern).View()) &&
                                 MatchPart(FileSystem::GetExt(path).View(), FileSystem::GetExt(pattern).View()));
}

/// The file of that name, or the directory.
CVirtualFileBase& CVirtualFileSystem::FindObject(const CUnicodeString& path) {
    CVirtualFileBase* object = Root->FindFileData(path);
    if (!object) {
        object = Root->FindDirectory(path);
    }
    if (!object) {
        GenerateFileException(Platform::ErrorFileNotFound, path);
    }
    return *object;
}

} // namespace Tsx
