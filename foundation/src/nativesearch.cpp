// What the native file system tells of files, and sets: searches, attributes, times.
#include "foundation/src/nativesearch.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/nativefilesystem.h"
#include "platform/inc/directories.h"
#include "platform/inc/filenames.h"
#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include <string_view>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\nativesearch";

class CErrorModeScope {
public:
    CErrorModeScope() : previous(Platform::SetErrorMode(0)) {
        Platform::SetErrorMode(previous | Platform::SemFailCriticalErrors | Platform::SemNoOpenFileErrorBox);
    }
    ~CErrorModeScope() { Platform::SetErrorMode(previous); }
    CErrorModeScope(const CErrorModeScope&) = delete;
    CErrorModeScope& operator=(const CErrorModeScope&) = delete;

private:
    std::uint32_t previous;
};

/// A running search, ended in any case.
class CSearch {
public:
    explicit CSearch(const CUnicodeString& path) : handle(Platform::FindFirstFile(path.Text(), found)) {}
    ~CSearch() { End(); }
    CSearch(const CSearch&) = delete;
    CSearch& operator=(const CSearch&) = delete;

    bool Runs() const { return handle != Platform::InvalidHandle(); }
    bool Next() { return Platform::FindNextFile(handle, found); }
    bool End() {
        const bool ended = !Runs() || Platform::FindClose(handle);
        handle = Platform::InvalidHandle();
        return ended;
    }
    const Platform::FindData& Found() const { return found; }

private:
    Platform::FindData found;
    Platform::Handle handle;
};

/// Raises why a search has ended, unless it is that there are no entries, or no more.
void RequireNothingLeft(const CUnicodeString& directory) {
    const std::uint32_t error = Platform::GetLastError();
    if (error != Platform::ErrorNoMoreFiles && error != Platform::ErrorFileNotFound) {
        GenerateFileException(error, directory);
    }
}

void TakeData(CFileStatus& status, const Platform::FileAttributeData& data) {
    TSX_ASSERT(data.creationTime >= 0 && data.lastWriteTime >= 0 && data.lastAccessTime >= 0, ModuleName);
    status.CreationTime = data.creationTime;
    status.LastWriteTime = data.lastWriteTime;
    status.LastAccessTime = data.lastAccessTime;
    status.Size = data.size;
    status.Attributes = data.attributes;
}

void AppendFound(CArray<CFileStatus>& results, const CUnicodeString& directory, const Platform::FindData& found) {
    constexpr std::u16string_view self = u".";
    constexpr std::u16string_view parent = u"..";
    if (found.name == self || found.name == parent) {
        return;
    }
    CFileStatus status;
    status.Name = found.name;
    status.FullName = FileSystem::GetAbsoluteName(directory, status.Name);
    TakeData(status, found);
    results.Append(std::move(status));
}

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
    if (!Platform::SetFileTime(file, creation, lastAccess, lastWrite)) {
        const std::uint32_t error = Platform::GetLastError();
        Platform::CloseHandle(file);
        GenerateFileException(error, path);
    }
    if (!Platform::CloseHandle(file)) {
        GenerateFileException(Platform::GetLastError(), path);
    }
}

} // namespace

bool ExistsQuietly(const CUnicodeString& path) {
    const CErrorModeScope scope;
    if (CSearch(path).Runs()) {
        return true;
    }
    if (Platform::GetLastError() == Platform::ErrorNotEnoughMemory) {
        GenerateMemoryException(); // no answer: the file may well be there
    }
    return false;
}

void CNativeFileSystem::FindFiles(const CUnicodeString& directory, CArray<CFileStatus>& results,
                                  const CUnicodeString& pattern) {
    results.RemoveAll();
    CSearch search(AddLongPathPrefix(FileSystem::MergeName(directory, pattern)));
    if (!search.Runs()) {
        RequireNothingLeft(directory);
        return;
    }
    do {
        AppendFound(results, directory, search.Found());
    } while (search.Next());
    RequireNothingLeft(directory);
    if (!search.End()) {
        GenerateFileException(Platform::GetLastError(), directory);
    }
}

void CNativeFileSystem::GetStatus(const CUnicodeString& path, CFileStatus& status) {
    status.FullName = path;
    status.Name = FileSystem::GetNameAndExt(status.FullName);
    FileSystem::GetFullName(status.FullName);
    Platform::FileAttributeData data;
    if (!Platform::GetFileAttributesEx(path.Text(), data)) {
        GenerateFileException(Platform::GetLastError(), path);
    }
    TakeData(status, data);
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
