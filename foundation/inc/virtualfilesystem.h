// The file system under the root \\Ostrel\Tessarix\VirtualFiles$\, which needs no disk.
#pragma once

#include "foundation/inc/filesystembase.h"

namespace Tsx {

/// So far the root holds nothing and takes nothing: what is there is not found, and what would be made is denied. A
/// path outside the root is an internal error. One object serves the process; a second one is an internal error.
class CVirtualFileSystem : public CFileSystemBase {
public:
    CVirtualFileSystem();
    ~CVirtualFileSystem() override;

    static CUnicodeString GetRootName();
    /// Frees whatever is open or stored.
    void ReleaseAll();

    CBaseFile* OpenFile(const CUnicodeString& path, std::uint32_t access, std::uint32_t share, void* security,
                        std::uint32_t disposition, std::uint32_t attributes, Platform::Handle templateFile,
                        std::int64_t reserve, CFile* owner) override;
    void CloseFile(CBaseFile* file, bool abort) override;
    bool DirectoryExists(const CUnicodeString& path) override;
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
    /// A missing directory is not reported.
    void RemoveDirectory(const CUnicodeString& path) override;
    void FindFiles(const CUnicodeString& directory, CArray<CFileStatus>& results,
                   const CUnicodeString& pattern) override;
    void GetStatus(const CUnicodeString& path, CFileStatus& status) override;
    void SetStatus(const CUnicodeString& path, const CFileStatus& status) override;
};

} // namespace Tsx
