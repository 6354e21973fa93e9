#include "foundation/inc/nativefilesystem.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/file.h"
#include "foundation/inc/makeobject.h"
#include "foundation/inc/nativefile.h"
#include "foundation/src/nativesearch.h"
#include "foundation/src/separators.h"
#include "foundation/src/statics.h"
#include "platform/inc/directories.h"
#include "platform/inc/filenames.h"
#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include <algorithm>
#include <limits>
#include <memory>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\nativefilesystem";

/// Raises the last error where a call of the system failed.
void Check(bool success, const CUnicodeString& path) {
    if (!success) {
        GenerateFileException(Platform::GetLastError(), path);
    }
}

/// `C:` with anything in the place of the letter, or two equal separators.
bool BeginsLikeAbsolute(const CUnicodeString& path) {
    return IsSeparator(path[0]) ? path[1] == path[0] : path[1] == u':';
}

/// The directory above, or an empty text where none can be made: above a root, a server name, or a single name.
CUnicodeString GetParentToMake(const CUnicodeString& path) {
    CUnicodeString text = path;
    if (EndsInSeparator(text)) {
        text = text.Left(text.Length() - 1);
    }
    const std::int32_t last = FindLastSeparator(text);
    const bool server = last == 1 && text[0] == text[1];
    const bool drive = last == 2 && text[1] == u':';
    return last <= 0 || server || drive ? CUnicodeString() : text.Left(last);
}

/// The directory whose volume a path lies on: the path, the one above it, or the root where neither is there. A root
/// may hold other volumes.
CUnicodeString GetPlaceOnVolume(CNativeFileSystem& system, const CUnicodeString& path) {
    for (const CUnicodeString& place : {path, FileSystem::GetPath(path)}) {
        if (system.DirectoryExists(place)) {
            return FileSystem::AddTrailingSlash(place);
        }
    }
    return FileSystem::GetRoot(path);
}

} // namespace

CNativeFileSystem::CNativeFileSystem() {
    TSX_ASSERT(!NativeFileSystem, ModuleName);
    NativeFileSystem = this;
}

CNativeFileSystem::~CNativeFileSystem() {
    NativeFileSystem = nullptr;
}

CBaseFile* CNativeFileSystem::OpenFile(const CUnicodeString& path, std::uint32_t access, std::uint32_t share,
                                       void* security, std::uint32_t disposition, std::uint32_t attributes,
                                       Platform::Handle templateFile, std::int64_t, CFile*) {
    auto file = MakeObject<CNativeFile>();
    file->Open(path, access, share, security, disposition, attributes, templateFile);
    return file.release();
}

void CNativeFileSystem::CloseFile(CBaseFile* file, bool abort) {
    TSX_ASSERT(file, ModuleName);
    const std::unique_ptr<CBaseFile> owner(file);
    if (file) {
        abort ? file->Abort() : file->Close();
    }
}

bool CNativeFileSystem::DirectoryExists(const CUnicodeString& path) {
    CUnicodeString full = path;
    try {
        FileSystem::GetFullName(full);
    } catch (CFileException* exception) {
        delete exception;
        return false;
    }
    if (full.Length() < 3 || !BeginsLikeAbsolute(full)) {
        return false;
    }
    if (full.Length() == 3 && full[1] == u':' && IsSeparator(full[2])) {
        return Platform::GetDriveType(full.Text()) != Platform::DriveNoRootDir;
    }
    return ExistsQuietly(FileSystem::MergeName(full, u"*"));
}

bool CNativeFileSystem::CheckFile(const CUnicodeString& path, std::uint32_t mode) {
    if (path.IsEmpty()) {
        return false;
    }
    if (mode == FA_Exists) {
        return ExistsQuietly(path);
    }
    TSX_ASSERT((mode & OM_ShareMask) != 0, ModuleName);
    const Platform::Handle handle =
        Platform::CreateFile(path.Text(), CFile::GetDesiredAccess(mode), CFile::GetShareMode(mode), nullptr,
                             Platform::OpenExisting, Platform::FileAttributeNormal, nullptr);
    if (handle == Platform::InvalidHandle()) {
        return false;
    }
    Platform::CloseHandle(handle);
    return true;
}

void CNativeFileSystem::SetAttributes(const CUnicodeString& path, std::uint32_t attributes) {
    Check(Platform::SetFileAttributes(path.Text(), attributes), path);
}

std::uint32_t CNativeFileSystem::GetAttributes(const CUnicodeString& path) {
    const std::uint32_t attributes = Platform::GetFileAttributes(path.Text());
    Check(attributes != Platform::InvalidFileAttributes, path);
    return attributes;
}

void CNativeFileSystem::DeleteFile(const CUnicodeString& path) {
    Check(Platform::DeleteFile(path.Text()), path);
}

bool CNativeFileSystem::TryDeleteFile(const CUnicodeString& path) {
    return Platform::DeleteFile(path.Text());
}

void CNativeFileSystem::CopyFile(const CUnicodeString& target, const CUnicodeString& source) {
    if (Platform::CopyFile(source.Text(), target.Text(), false)) {
        return;
    }
    // The system's reason may mean either file. Find the one to name, or take a target away that stands in the way.
    Check(CheckFile(source, OM_Read | OM_ShareDenyWrite), source);
    CheckWritable(*this, target);
    if (CheckFile(target, FA_Exists)) {
        DeleteFile(target);
    }
    Check(Platform::CopyFile(source.Text(), target.Text(), false), target);
}

void CNativeFileSystem::MoveFile(const CUnicodeString& target, const CUnicodeString& source) {
    constexpr std::uint32_t flags =
        Platform::MoveFileReplaceExisting | Platform::MoveFileCopyAllowed | Platform::MoveFileWriteThrough;
    Check(Platform::MoveFileEx(source.Text(), target.Text(), flags), target);
}

void CNativeFileSystem::MoveFileOnVolume(const CUnicodeString& target, const CUnicodeString& source) {
    Check(Platform::MoveFileEx(source.Text(), target.Text(), Platform::MoveFileReplaceExisting), target);
}

void CNativeFileSystem::RenameFile(const CUnicodeString& source, const CUnicodeString& target) {
    Check(Platform::MoveFile(source.Text(), target.Text()), target);
}

std::int32_t CNativeFileSystem::GetFreeSpace(const CUnicodeString& path) {
    CUnicodeString place = GetPlaceOnVolume(*this, path);
    char16_t* text = place.GetBuffer(place.Length());
    std::replace(text, text + place.Length(), u'/', u'\\');
    std::uint64_t bytes = 0;
    Check(Platform::GetDiskFreeSpaceEx(place.Text(), &bytes, nullptr, nullptr), FileSystem::GetRoot(place));
    constexpr std::uint64_t most = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(bytes >> 10, most));
}

void CNativeFileSystem::CreateDirectory(const CUnicodeString& path, bool failIfExists) {
    if (Platform::CreateDirectory(path.Text(), nullptr)) {
        return;
    }
    const std::uint32_t error = Platform::GetLastError();
    if (error == Platform::ErrorAlreadyExists && !failIfExists) {
        return;
    }
    const bool parentMissing = error == Platform::ErrorFileNotFound || error == Platform::ErrorPathNotFound;
    const CUnicodeString parent = parentMissing ? GetParentToMake(path) : CUnicodeString();
    if (parent.IsEmpty()) {
        GenerateFileException(error, path);
    }
    CreateDirectory(parent, false);
    Check(Platform::CreateDirectory(path.Text(), nullptr), path);
}

void CNativeFileSystem::RemoveDirectory(const CUnicodeString& path) {
    Check(Platform::RemoveDirectory(path.Text()), path);
}

} // namespace Tsx
