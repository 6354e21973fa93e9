// The interface of a file system, and what it tells of a file.
#pragma once

#include "foundation/inc/array.h"
#include "foundation/inc/openmode.h"
#include "foundation/inc/unicodestring.h"
#include "platform/inc/types.h"

namespace Tsx {

class CBaseFile;
class CFile;

/// One file or directory. Times are counts of 100 ns since 1601 in UTC, 0 for none.
struct CFileStatus {
    std::int64_t CreationTime = 0;
    std::int64_t LastWriteTime = 0;
    std::int64_t LastAccessTime = 0;
    std::int64_t Size = 0;        // bytes
    std::uint32_t Attributes = 0; // the system's file attribute bits
    CUnicodeString FullName;      // absolute
    CUnicodeString Name;          // the last component with its extension
};

// What FindFilesEx accepts.
constexpr std::uint32_t FF_Recursive = 1; // what subdirectories hold, too
constexpr std::uint32_t FF_Hidden = 2;    // entries with the hidden or the system bit
constexpr std::uint32_t FF_Files = 4;
constexpr std::uint32_t FF_Directories = 8;

/// Decides for each directory of a FindFilesEx whether it is looked into. `results` is what has been found so far.
class IFindFilesFilter {
public:
    virtual bool Accept(const CUnicodeString& directory, CArray<CFileStatus>& results,
                        const CUnicodeString& patterns) = 0;

protected:
    ~IFindFilesFilter() = default;
};

/// Operations that fail raise CFileException, unless their declaration says otherwise. The file system in memory
/// (CVirtualFileSystem) departs from what is said below:
///
///   any path outside it                   is an internal error, an empty one too, but for CheckFile
///   CopyFile, MoveFile, MoveFileOnVolume  replace a read-only target
///   RenameFile                            replaces the target
///   MoveFileOnVolume                      copies, also from or to a disk
///   DeleteTree                            deletes read-only files, whatever `clearReadOnly` says
class CFileSystemBase {
public:
    CFileSystemBase() = default;
    virtual ~CFileSystemBase() = default;
    CFileSystemBase(const CFileSystemBase&) = delete;
    CFileSystemBase& operator=(const CFileSystemBase&) = delete;

    /// Opens with the values of CreateFile. The file is the caller's until CloseFile. `reserve` (expected bytes) and
    /// `owner` (the CFile that the file is for, or null) serve files in memory. The template is the caller's: only a
    /// file that is made in memory takes it over, see there. Null where a check failed on a thread that must not throw.
    virtual CBaseFile* OpenFile(const CUnicodeString& path, std::uint32_t access, std::uint32_t share, void* security,
                                std::uint32_t disposition, std::uint32_t attributes, Platform::Handle templateFile,
                                std::int64_t reserve, CFile* owner) = 0;
    /// Closes and deletes a file of OpenFile, also when the closing raises.
    virtual void CloseFile(CBaseFile* file, bool abort) = 0;
    /// Raises nothing; false for an empty path.
    virtual bool DirectoryExists(const CUnicodeString& path) = 0;
    /// Whether the path exists (FA_Exists), or could be opened in a mode just now. Raises nothing; false for an empty
    /// path.
    virtual bool CheckFile(const CUnicodeString& path, std::uint32_t mode) = 0;
    virtual void SetAttributes(const CUnicodeString& path, std::uint32_t attributes) = 0;
    virtual std::uint32_t GetAttributes(const CUnicodeString& path) = 0;
    virtual void DeleteFile(const CUnicodeString& path) = 0;
    /// Raises nothing.
    virtual bool TryDeleteFile(const CUnicodeString& path) = 0;
    /// The target is replaced, unless it is read-only.
    virtual void CopyFile(const CUnicodeString& target, const CUnicodeString& source) = 0;
    /// Replaces the target, and copies where source and target lie on different volumes.
    virtual void MoveFile(const CUnicodeString& target, const CUnicodeString& source) = 0;
    /// Replaces the target, on one volume.
    virtual void MoveFileOnVolume(const CUnicodeString& target, const CUnicodeString& source) = 0;
    /// Never replaces anything. AS DESIGNED: the source comes first here, and the target first in the three above.
    virtual void RenameFile(const CUnicodeString& source, const CUnicodeString& target) = 0;
    /// Kilobytes, at most 0x7FFFFFFF.
    virtual std::int32_t GetFreeSpace(const CUnicodeString& path) = 0;
    /// Makes all levels that are missing.
    virtual void CreateDirectory(const CUnicodeString& path, bool failIfExists) = 0;
    virtual void RemoveDirectory(const CUnicodeString& path) = 0;
    /// The entries of a directory that match a pattern, in no particular order.
    virtual void FindFiles(const CUnicodeString& directory, CArray<CFileStatus>& results,
                           const CUnicodeString& pattern) = 0;
    virtual void GetStatus(const CUnicodeString& path, CFileStatus& status) = 0;
    /// Sets attributes and times.
    virtual void SetStatus(const CUnicodeString& path, const CFileStatus& status) = 0;

    /// Appends what a directory holds: for each of the `patterns` (with `;` between them) the entries that `flags`, a
    /// sum of the FF constants, accept, and then those of the subdirectories, links to such left out. An entry that
    /// matches two patterns appears twice.
    void FindFilesEx(const CUnicodeString& directory, CArray<CFileStatus>& results, const CUnicodeString& patterns,
                     std::uint32_t flags, IFindFilesFilter* filter = nullptr);

    /// Deletes a directory with all below it; read-only files only if `clearReadOnly` is set. Of a link to a directory,
    /// `path` included, the link alone goes. What was deleted before a failure stays deleted.
    void DeleteTree(const CUnicodeString& path, bool clearReadOnly);

protected:
    /// After a failed copy: raises the reason why its target cannot be written, its directory being missing or the file
    /// not to be opened.
    static void CheckWritable(CFileSystemBase& system, const CUnicodeString& path);
};

} // namespace Tsx
