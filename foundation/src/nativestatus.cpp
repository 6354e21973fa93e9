// The attributes and times of single native files.
#include "foundation/src/nativestatus.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/nativefilesystem.h"
#include "platform/inc/filenames.h"
#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\nativestatus";

/// Null, which leaves a time alone, for no time.
const std::int64_t* GivenTime(const std::int64_t& time) {
    return time == 0 ? nullptr : &time;
}

/// Raises for `path`; the handle is closed in any case.
void SetTimes(const CUnicodeString& path, const std::int64_t* creation, const std::int64_t* lastAccess,
              const std::int64_t* lastWrite) {
    const Platform::Handle file =
        Platform::CreateFile(path.Text(), Platform::GenericRead | Platform::GenericWrite, Platform::FileShareRead,
                             nullptr, Platform::OpenExisting, Platform::FileAttributeNormal, nullptr);
    if (file == Platform::InvalidHandle()) {
        GenerateFileException(Platform::GetLastError(), path);
    }
    const bool isSet = Platform::SetFileTime(file, creation, lastAccess, lastWrite);
    const std::uint32_t error = Platform::GetLastError();
    if (!Platform::CloseHandle(file) || !isSet) {
        GenerateFileException(isSet ? Platform::GetLastError() : error, path);
    }
}

} // namespace

void TakeFileData(CFileStatus& status, const Platform::FileAttributeData& data) {
    TSX_ASSERT(data.creationTime >= 0 && data.lastWriteTime >= 0 && data.lastAccessTime >= 0, ModuleName);
    status.CreationTime = data.creationTime;
    status.LastWriteTime = data.lastWriteTime;
    status.LastAccessTime = data.lastAccessTime;
    status.Size = data.size;
    status.Attributes = data.attributes;
}

void CNativeFileSystem::GetStatus(const CUnicodeString& path, CFileStatus& status) {
    status.FullName = path;
    status.Name = FileSystem::GetNameAndExt(status.FullName);
    FileSystem::GetFullName(status.FullName);
    Platform::FileAttributeData data;
    if (!Platform::GetFileAttributesEx(path.Text(), data)) {
        GenerateFileException(Platform::GetLastError(), path);
    }
    TakeFileData(status, data);
}

void CNativeFileSystem::SetStatus(const CUnicodeString& path, const CFileStatus& status) {
    const std::uint32_t attributes = GetAttributes(path);
    bool attributesDiffer = attributes != status.Attributes;
    if (attributesDiffer && (attributes & Platform::FileAttributeReadOnly)) {
        SetAttributes(path, status.Attributes); // a read-only file does not take times
        attributesDiffer = false;
    }
    const std::int64_t* creation = GivenTime(status.CreationTime);
    const std::int64_t* lastAccess = GivenTime(status.LastAccessTime);
    const std::int64_t* lastWrite = GivenTime(status.LastWriteTime);
    if (!creation && !lastAccess && !lastWrite) {
        return;
    }
    SetTimes(path, creation, lastAccess, lastWrite);
    if (attributesDiffer) {
        SetAttributes(path, status.Attributes);
    }
}

} // namespace Tsx
