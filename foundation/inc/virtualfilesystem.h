// The file system under the root \\Ostrel\Tessarix\VirtualFiles$\, which is all in memory: a tree of names, and which
// files are open. What files hold is the business of virtualfiledata.h and virtualfile.h.
#pragma once

#include "foundation/inc/criticalsection.h"
#include "foundation/inc/filesystembase.h"
#include "foundation/inc/hashtable.h"
#include "foundation/inc/virtualdirectory.h"
#include "foundation/inc/virtualfile.h"

namespace Tsx {

/// One object serves the process; a second one is an internal error. Any thread: handles on one file may be on
/// different ones, a single handle serves one at a time. Any other path than one under the root is an internal error,
/// an empty one too unless CheckFile is asked. Names differ from those of a disk in these ways:
///
///   a missing directory    is made by whatever makes something in it
///   a file's times         are that of its making until SetStatus
///   a move, a rename       copies, and replaces the target
///   a read-only file       refuses writers only while nobody has it open; it is replaced and deleted as any other
class CVirtualFileSystem : public CFileSystemBase {
public:
    CVirtualFileSystem();
    /// Does ReleaseAll; a failure is shown.
    ~CVirtualFileSystem() override;

    static CUnicodeString GetRootName();
    /// Closes whatever is open through the CFile that it was opened for, and deletes whatever is stored, with a line in
    /// the debug trace for each object. What an owner raises is raised when all are closed. A file that its owner does
    /// not close, or that has none, is an internal error, and then nothing is deleted.
    void ReleaseAll();

    /// `templateFile` is null or a mapping object: a file that is made lies over its first `reserve` bytes, is
    /// read-only and owns it from then on. It stays the caller's if this raises, and where OPEN_ALWAYS finds a file.
    ///
    /// AS DESIGNED: what a new handle shares is not compared with what the earlier ones have the file open for, only
    /// the other way round. Read-only attributes count only while no handle is open.
    CBaseFile* OpenFile(const CUnicodeString& path, std::uint32_t access, std::uint32_t share, void* security,
                        std::uint32_t disposition, std::uint32_t attributes, Platform::Handle templateFile,
                        std::int64_t reserve, CFile* owner) override;
    /// AS DESIGNED: `abort` calls Close of the file and its absence Abort, the other way round than for files of the
    /// system: what goes wrong in CFile::Close is shown and not raised here.
    void CloseFile(CBaseFile* file, bool abort) override;
    bool DirectoryExists(const CUnicodeString& path) override;
    /// A directory is no file here.
    bool CheckFile(const CUnicodeString& path, std::uint32_t mode) override;
    void SetAttributes(const CUnicodeString& path, std::uint32_t attributes) override;
    std::uint32_t GetAttributes(const CUnicodeString& path) override;
    void DeleteFile(const CUnicodeString& path) override;
    bool TryDeleteFile(const CUnicodeString& path) override;
    /// One of the names at least is under the root. A target that could not be filled is deleted.
    void CopyFile(const CUnicodeString& target, const CUnicodeString& source) override;
    void MoveFile(const CUnicodeString& target, const CUnicodeString& source) override;
    void MoveFileOnVolume(const CUnicodeString& target, const CUnicodeString& source) override;
    void RenameFile(const CUnicodeString& source, const CUnicodeString& target) override;
    /// What the page file has.
    std::int32_t GetFreeSpace(const CUnicodeString& path) override;
    /// AS DESIGNED: an existing directory is no error, whatever `failIfExists` says.
    void CreateDirectory(const CUnicodeString& path, bool failIfExists) override;
    /// A missing directory is not reported, one with entries is a sharing violation, and the root stays.
    void RemoveDirectory(const CUnicodeString& path) override;
    /// Files first, then directories, behind what `results` holds. A missing directory has no entries.
    void FindFiles(const CUnicodeString& directory, CArray<CFileStatus>& results,
                   const CUnicodeString& pattern) override;
    /// AS DESIGNED: neither of these two takes the lock, nor looks at the root: not while other threads make or delete.
    void GetStatus(const CUnicodeString& path, CFileStatus& status) override;
    void SetStatus(const CUnicodeString& path, const CFileStatus& status) override;

    /// Whether the name and extension of a path match those of a pattern, each part by itself and letter by letter. `?`
    /// is any character, `*` ends the comparison of its part:
    ///
    ///   *.*      any path
    ///   *        abc; not a.txt, for the pattern has no extension
    ///   a?c.t*   abc.txt; not Abc.txt, a.txt, abc.
    ///   abc*     abcd; not abc, ab
    ///
    /// AS DESIGNED: a text must have as many characters as its part of the pattern, so that a `*` stands for one at
    /// least.
    static bool MatchName(const CUnicodeString& path, const CUnicodeString& pattern);

protected:
    /// The open handles of one file.
    class CFileSet : public CHashTable<CVirtualFile*, CKeyTraits<CVirtualFile*>, CRuntimeHeapPolicy>,
                     public CAllocatedOn<RuntimeHeap> {};
    using COpenFileMap = CMap<CUnicodeString, CFileSet*, CPathKeyTraits, CRuntimeHeapPolicy>;
    using COwnerMap = CMap<CVirtualFile*, CFile*, CKeyTraits<CVirtualFile*>, CRuntimeHeapPolicy>;

    CCriticalSection Lock;   // over the three below; strings and the platform's locks come inside it
    CVirtualDirectory* Root; // owned
    COpenFileMap OpenFiles;  // by the files' names; each set is owned and has a member
    COwnerMap FileOwners;    // a handle and the CFile that it was opened for, or null

private:
    CVirtualFileData* FindForOpening(const CUnicodeString& path, std::uint32_t disposition) const;
    static bool MayOpenAlone(std::uint32_t attributes, std::uint32_t access);
    bool MayOpen(const CVirtualFileData& data, std::uint32_t access) const;
    bool HasHandles(const CVirtualFileData& data) const { return OpenFiles.Has(data.Name); }
    CVirtualFileBase& FindObject(const CUnicodeString& path);

    void RegisterFile(const CUnicodeString& name, CVirtualFile* file, CFile* owner);
    void UnregisterFile(CVirtualFile* file);
    void ForgetFile(const CUnicodeString& name, CVirtualFile* file);
    CFile* FindOwnerToClose(const CFileSet& stuck, CVirtualFile*& file) const;
    std::unique_ptr<CException> CloseOwners();

    void CopyIn(const CUnicodeString& target, const CUnicodeString& source);
    void CopyOut(const CUnicodeString& target, const CUnicodeString& source);
};

} // namespace Tsx
