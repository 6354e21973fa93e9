// The file system over the platform's files, and what the system offers beside files: folders with a meaning, and the
// temporary objects that the shutdown sweeps.
#pragma once

#include "foundation/inc/filesystem.h"
#include "foundation/inc/specialfolder.h"

namespace Tsx {

/// One object serves the process; a second one is an internal error. Operations may be called from any thread.
class CNativeFileSystem : public CFileSystemBase {
public:
    CNativeFileSystem();
    ~CNativeFileSystem() override;

    CBaseFile* OpenFile(const CUnicodeString& path, std::uint32_t access, std::uint32_t share, void* security,
                        std::uint32_t disposition, std::uint32_t attributes, Platform::Handle templateFile,
                        std::int64_t reserve, CFile* owner) override;
    void CloseFile(CBaseFile* file, bool abort) override;
    /// No box asks for a medium in a drive that has none. `C:` is the current directory of that drive.
    bool DirectoryExists(const CUnicodeString& path) override;
    /// No box here either. A mode without share bits is an internal error.
    bool CheckFile(const CUnicodeString& path, std::uint32_t mode) override;
    void SetAttributes(const CUnicodeString& path, std::uint32_t attributes) override;
    std::uint32_t GetAttributes(const CUnicodeString& path) override;
    void DeleteFile(const CUnicodeString& path) override;
    bool TryDeleteFile(const CUnicodeString& path) override;
    void CopyFile(const CUnicodeString& target, const CUnicodeString& source) override;
    void MoveFile(const CUnicodeString& target, const CUnicodeString& source) override;
    void MoveFileOnVolume(const CUnicodeString& target, const CUnicodeString& source) override;
    void RenameFile(const CUnicodeString& source, const CUnicodeString& target) override;
    std::int32_t GetFreeSpace(const CUnicodeString& path) override;
    void CreateDirectory(const CUnicodeString& path, bool failIfExists) override;
    void RemoveDirectory(const CUnicodeString& path) override;
    /// Replaces `results`. Where the system finds nothing (error 2) there are no entries; a path that it does not know
    /// (error 3) raises. Never "." and "..".
    void FindFiles(const CUnicodeString& directory, CArray<CFileStatus>& results,
                   const CUnicodeString& pattern) override;
    void GetStatus(const CUnicodeString& path, CFileStatus& status) override;
    /// A time of 0 stays as it is.
    /// AS DESIGNED: without any time a file that is not read-only does not get its new attributes either.
    void SetStatus(const CUnicodeString& path, const CFileStatus& status) override;

    /// The path of a folder that the system keeps for the user, with a closing separator.
    static CUnicodeString GetSpecialFolder(TSpecialFolder folder);
    /// Forgets the table of special folders; the next question builds it anew.
    static void ClearSpecialFolders();
    /// Sets the application's folders to a path below the user's local, the user's roaming and the common application
    /// data.
    static void SetApplicationFolders(const CUnicodeString& relativePath);
    /// Sets all three to one folder, where the system has none to offer.
    static void StoreApplicationFolders(const CUnicodeString& folder);

    /// The form in which the system takes a long path:
    ///
    ///   up to 260 characters, or relative in any way    as it is
    ///   C:\a\.\b          \\?\C:\a\b
    ///   \\srv\sh\x        \\?\UNC\srv\sh\x
    static CUnicodeString AddLongPathPrefix(const CUnicodeString& path);
    /// Resolves `.` and `..` in a path of the type PT_UNC or PT_DriveAbsolute; any other type and an empty path are
    /// internal errors. `..` never climbs above the drive or the share:
    ///
    ///   C:\..\..\a\.\b    C:\a\b        \\s\h\..\x        \\s\h\x
    ///   C:\a\..           C:\           \\s\h\x\..        \\s\h
    static CUnicodeString GetCanonicalPath(const CUnicodeString& path, TPathType type);

    static void SetTemporaryFolder(const CUnicodeString& path);
    /// Deletes the temporary files and directories; see tempobjects.cpp. Raises nothing.
    static void ReleaseTemporaryObjects();
};

} // namespace Tsx
