#include "foundation/inc/filesystembase.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/filesystem.h"
#include "platform/inc/fileattributes.h"

namespace Tsx {

namespace {

// A link to a directory is an entry of its own: what it leads to belongs to another tree, or holds this one.
bool IsLink(std::uint32_t attributes) {
    return attributes & Platform::FileAttributeReparsePoint;
}

bool IsAccepted(std::uint32_t attributes, std::uint32_t flags) {
    const bool directory = attributes & Platform::FileAttributeDirectory;
    const bool hidden = attributes & (Platform::FileAttributeHidden | Platform::FileAttributeSystem);
    return (flags & (directory ? FF_Directories : FF_Files)) && (!hidden || (flags & FF_Hidden));
}

void ClearReadOnly(CFileSystemBase& system, const CUnicodeString& path, std::uint32_t attributes) {
    if (attributes & Platform::FileAttributeReadOnly) {
        system.SetAttributes(path, attributes & ~Platform::FileAttributeReadOnly);
    }
}

} // namespace

void CFileSystemBase::FindFilesEx(const CUnicodeString& directory, CArray<CFileStatus>& results,
                                  const CUnicodeString& patterns, std::uint32_t flags, IFindFilesFilter* filter) {
    if (filter && !filter->Accept(directory, results, patterns)) {
        return;
    }
    CArray<CFileStatus> found;
    for (std::int32_t start = 0; start < patterns.Length();) {
        const std::int32_t semicolon = patterns.Find(u';', start);
        const std::int32_t end = semicolon < 0 ? patterns.Length() : semicolon;
        if (end > start) {
            found.RemoveAll(); // not every file system does that
            FindFiles(directory, found, patterns.Mid(start, end - start));
            for (const CFileStatus& status : found) {
                if (IsAccepted(status.Attributes, flags)) {
                    results.Append(status);
                }
            }
        }
        start = end + 1;
    }
    if (flags & FF_Recursive) {
        CArray<CFileStatus> directories;
        FindFilesEx(directory, directories, u"*", (flags & FF_Hidden) | FF_Directories, nullptr);
        for (CFileStatus& status : directories) {
            if (!IsLink(status.Attributes)) {
                FileSystem::RemoveTrailingSlash(status.FullName);
                FindFilesEx(status.FullName, results, patterns, flags, filter);
            }
        }
    }
}

void CFileSystemBase::DeleteTree(const CUnicodeString& path, bool clearReadOnly) {
    CArray<CFileStatus> entries;
    FindFiles(path, entries, u"*.*");
    const std::uint32_t attributes = GetAttributes(path);
    if (IsLink(attributes)) {
        entries.RemoveAll(); // they are not below this path
    }
    for (const CFileStatus& entry : entries) {
        if (entry.Attributes & Platform::FileAttributeDirectory) {
            DeleteTree(entry.FullName, clearReadOnly);
            continue;
        }
        if (clearReadOnly) {
            ClearReadOnly(*this, entry.FullName, entry.Attributes);
        }
        DeleteFile(entry.FullName);
    }
    // AS DESIGNED: a directory's own read-only bit goes, whatever `clearReadOnly` says.
    ClearReadOnly(*this, path, attributes);
    RemoveDirectory(path);
}

void CFileSystemBase::CheckWritable(CFileSystemBase& system, const CUnicodeString& path) {
    if (!system.CheckFile(path, FA_Exists)) {
        CUnicodeString full = path;
        FileSystem::GetFullName(full);
        const CUnicodeString directory = FileSystem::GetPath(full);
        if (!system.DirectoryExists(directory)) {
            GenerateFileCauseException(FC_BadPath, directory);
        }
    } else if (!system.CheckFile(path, OM_Write | OM_ShareExclusive)) {
        GenerateFileCauseException(FC_AccessDenied, path);
    }
}

} // namespace Tsx
