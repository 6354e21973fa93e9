// The native file system's searches.
#include "foundation/src/nativesearch.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/nativefilesystem.h"
#include "foundation/inc/scopeexit.h"
#include "foundation/src/nativestatus.h"
#include "platform/inc/directories.h"
#include "platform/inc/filenames.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/process.h"
#include <string_view>

namespace Tsx {

namespace {

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

void AppendFound(CArray<CFileStatus>& results, const CUnicodeString& directory, const Platform::FindData& found) {
    constexpr std::u16string_view self = u".";
    constexpr std::u16string_view parent = u"..";
    if (found.name == self || found.name == parent) {
        return;
    }
    CFileStatus status;
    status.Name = found.name;
    status.FullName = FileSystem::GetAbsoluteName(directory, status.Name);
    TakeFileData(status, found);
    results.Append(std::move(status));
}

} // namespace

bool ExistsQuietly(const CUnicodeString& path) {
    const std::uint32_t mode = Platform::SetErrorMode(0);
    Platform::SetErrorMode(mode | Platform::SemFailCriticalErrors | Platform::SemNoOpenFileErrorBox);
    const CScopeExit restore([mode] { Platform::SetErrorMode(mode); });
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
    CArray<CFileStatus> before; // in which the arguments may stand
    results.Swap(before);
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

} // namespace Tsx
